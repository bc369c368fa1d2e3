#pragma once

#include <optional>

namespace ZAV {
namespace Platform {

/// How a file that is opened for writing is found and made. Without effect on Windows.
struct FileRules {
    /// The permissions of a file that is made, whatever the process masks; without them every permission to
    /// read and write that the process does not mask. A file that exists keeps its own.
    std::optional<unsigned> permissions;

    /// Whether a symbolic link in the place of the file leads to it, or is an error. Where it is an error,
    /// a process that runs as root refuses a file of another user as well.
    bool followLinks = true;
};

} // namespace Platform
} // namespace ZAV
