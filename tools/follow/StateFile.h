#pragma once

#include "follow/FilePlace.h"
#include "platform/Files.h"

#include <map>
#include <optional>
#include <string>

namespace ZAV {
namespace Tools {

/// Saves, for the next process, the place up to which each input is done. Only one process may use a state at
/// a time, which a lock file PATH.lock ensures; it is never removed.
class StateFile {
public:
    /// \throw Failure if the file exists and cannot be read, or if another process uses the state
    explicit StateFile(std::string path);

    /// \return true if an earlier process has left a state
    bool existed() const { return existed_; }

    std::optional<FilePlace> find(const std::string& input) const;

    /// Sets the place of an input; inputs that are not set keep theirs.
    void set(const std::string& input, const FilePlace& place);

    /// Writes the state next to the old one, if anything has changed, and waits until it is on the disk.
    /// \throw Failure if another process uses the state
    void prepare();

    /// Replaces the old state by the prepared one in one step, which takes no time. The disk holds the old
    /// state or the new one, also after a crash.
    void save();

    /// \return what went wrong when there last was something to save; empty if nothing did
    const std::string& problem() const { return problem_; }

private:
    void lock(std::string& problem);
    void fail(const std::string& reason);
    std::string read() const;
    void load();
    std::string text() const;

    std::string path_; ///< with a symbolic link resolved
    Platform::FileLock lock_;
    bool existed_ = false;
    bool isChanged_ = false;
    bool isPrepared_ = false;
    std::string problem_;
    std::map<std::string, FilePlace> places_; ///< by the inputs' keys in the JSON
};

} // namespace Tools
} // namespace ZAV
