#include "platform/DirectoryAccess.h"

#include "platform/linux/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace ZAV {
namespace Platform {

bool isWritableDirectory(const std::string& directory) {
    return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool isReadableDirectory(const std::string& directory, std::string& problem) {
    const FileDescriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen() && faccessat(AT_FDCWD, directory.c_str(), X_OK, AT_EACCESS) == 0) {
        return true;
    }
    problem = std::generic_category().message(errno);
    return false;
}

} // namespace Platform
} // namespace ZAV
