#include "platform/DirectoryAccess.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

bool isWritableDirectory(const std::string& directory) {
    const DWORD sharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileA(directory.c_str(), FILE_ADD_FILE, sharedByAll, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(handle);
    return true;
}

} // namespace Platform
} // namespace ZAV
