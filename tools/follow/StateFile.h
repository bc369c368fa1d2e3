#pragma once

#include "follow/FilePlace.h"

#include <map>
#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// Keeps, from one process to the next, the place in each input up to which all is done.
class StateFile {
public:
    /// \throw Failure if the file exists and cannot be read
    explicit StateFile(std::string path);

    /// \return true if an earlier process has left a state
    bool existed() const { return existed_; }

    std::optional<FilePlace> find(const std::string& input) const;

    /// Sets the place of an input; inputs that nobody sets keep theirs.
    void set(const std::string& input, const FilePlace& place);

    /// Replaces the file in one step, if anything has changed.
    /// \throw Failure
    void save();

private:
    std::string read() const;
    void load();
    std::string text() const;

    std::string path_;
    bool existed_ = false;
    bool isChanged_ = false;
    std::map<std::string, FilePlace> places_;
};

} // namespace Tools
} // namespace ZAV
