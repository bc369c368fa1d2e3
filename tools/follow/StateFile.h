#pragma once

#include "follow/FilePlace.h"
#include "platform/Files.h"

#include <map>
#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// Keeps, from one process to the next, the place in each input up to which all is done. Only one process may
/// use a state at a time; a file PATH.lock, which stays, sees to that.
class StateFile {
public:
    /// \throw Failure if the file exists and cannot be read, or if another process uses the state
    explicit StateFile(std::string path);

    /// \return true if an earlier process has left a state
    bool existed() const { return existed_; }

    std::optional<FilePlace> find(const std::string& input) const;

    /// Sets the place of an input; inputs that nobody sets keep theirs.
    void set(const std::string& input, const FilePlace& place);

    /// Puts the state on the disk beside the old one, if anything has changed, and waits for that.
    /// \throw Failure if another process uses the state
    void prepare();

    /// Puts what was prepared into the place of the old state, in one step that takes no time. On the disk is
    /// the old state or the new one, also after a crash.
    void save();

    /// \return what was wrong when there last was something to save; empty if all was well
    const std::string& problem() const { return problem_; }

private:
    void lock(std::string& problem);
    void fail(const std::string& reason);
    std::string read() const;
    void load();
    std::string text() const;

    std::string path_; ///< of the file itself where a symbolic link was given
    Platform::FileLock lock_;
    bool existed_ = false;
    bool isChanged_ = false;
    bool isPrepared_ = false;
    std::string problem_;
    std::map<std::string, FilePlace> places_; ///< by the keys of the inputs in the JSON
};

} // namespace Tools
} // namespace ZAV
