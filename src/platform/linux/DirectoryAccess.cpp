#include "platform/DirectoryAccess.h"

#include <fcntl.h>
#include <unistd.h>

namespace ZAV {
namespace Platform {

bool isWritableDirectory(const std::string& directory) {
    return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace Platform
} // namespace ZAV
