#include "platform/ReplacedFile.h"

#include <system_error>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

bool writeToDisk(const std::string& path, const std::string& content) {
    const HANDLE handle = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const DWORD size = static_cast<DWORD>(content.size());
    DWORD written = 0;
    const bool isOnDisk = WriteFile(handle, content.data(), size, &written, nullptr) && written == size &&
                          FlushFileBuffers(handle);
    const DWORD error = GetLastError();
    CloseHandle(handle);
    SetLastError(error);
    return isOnDisk;
}

} // namespace

bool replaceFile(const std::string& path, const std::string& content, std::string& problem) {
    const std::string next = path + ".new";
    if (writeToDisk(next, content) &&
        MoveFileExA(next.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return true;
    }
    problem = std::system_category().message(static_cast<int>(GetLastError()));
    DeleteFileA(next.c_str());
    return false;
}

} // namespace Platform
} // namespace ZAV
