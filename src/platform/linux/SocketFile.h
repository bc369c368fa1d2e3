#pragma once

#include "platform/linux/FileDescriptor.h"

#include <string>
#include <sys/types.h>

namespace ZAV {
namespace Platform {

/// A listening socket and its file, which nobody but this user may open and which goes with it. A forked
/// child must not destroy its copy, which would take the file from its parent.
class SocketFile {
public:
    /// Replaces the file of a socket whose server is gone.
    /// \throw std::runtime_error if another process serves the path, if there is another kind of file, or if the
    ///        system refuses
    explicit SocketFile(const std::string& path);
    ~SocketFile();
    SocketFile(const SocketFile&) = delete;
    SocketFile& operator=(const SocketFile&) = delete;

    /// Closes a forked child's copy.
    void closeInherited() noexcept { socket_.close(); }

    int descriptor() const noexcept { return socket_.number(); }

private:
    void bindAndListen();
    bool isStillThere() const;

    const std::string path_;
    FileDescriptor socket_;
    dev_t device_ = 0; ///< of the file, as is `inode_`: another file at the path is somebody else's
    ino_t inode_ = 0;
};

} // namespace Platform
} // namespace ZAV
