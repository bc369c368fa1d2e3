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

bool fail(const std::string& replacement, std::string& problem) {
    problem = std::system_category().message(static_cast<int>(GetLastError()));
    DeleteFileA(replacement.c_str());
    return false;
}

} // namespace

bool writeReplacement(const std::string& path, const std::string& content, std::string& problem) {
    const std::string replacement = path + ".new";
    return writeToDisk(replacement, content) || fail(replacement, problem);
}

bool replaceFile(const std::string& path, std::string& problem) {
    const std::string replacement = path + ".new";
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
    return MoveFileExA(replacement.c_str(), path.c_str(), flags) || fail(replacement, problem);
}

} // namespace Platform
} // namespace ZAV
