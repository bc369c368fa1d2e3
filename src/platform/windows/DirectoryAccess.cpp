#include "platform/DirectoryAccess.h"

#include <system_error>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

/// \return false, with the reason for `GetLastError`, if that is not granted
bool isGranted(const std::string& directory, DWORD access) {
    const DWORD sharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileA(directory.c_str(), access, sharedByAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(handle);
    return true;
}

} // namespace

bool isWritableDirectory(const std::string& directory) {
    return isGranted(directory, FILE_ADD_FILE);
}

bool isReadableDirectory(const std::string& directory, std::string& problem) {
    if (isGranted(directory, FILE_LIST_DIRECTORY)) {
        return true;
    }
    problem = std::system_category().message(static_cast<int>(GetLastError()));
    return false;
}

} // namespace Platform
} // namespace ZAV
