#include "platform/SequentialFile.h"

#include "platform/windows/SystemFailure.h"

#include <algorithm>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::size_t MOST_AT_ONCE = std::size_t{1024} * 1024;

bool isRegularFile(HANDLE handle) {
    BY_HANDLE_FILE_INFORMATION file;
    constexpr DWORD OTHERS = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    return GetFileType(handle) == FILE_TYPE_DISK && GetFileInformationByHandle(handle, &file) &&
           (file.dwFileAttributes & OTHERS) == 0;
}

} // namespace

bool SequentialFile::open(const std::string& path, std::string& problem) {
    const HANDLE opened =
        CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        problem = systemFailure().what();
        return false;
    }
    if (!isRegularFile(opened)) {
        problem = "Not a regular file";
        CloseHandle(opened);
        return false;
    }
    handle_ = reinterpret_cast<std::intptr_t>(opened);
    return true;
}

/// The byte lies behind the end of every file, so that nobody's reading or writing is refused.
bool SequentialFile::reserve() noexcept {
    OVERLAPPED place = {};
    place.OffsetHigh = 0x7FFFFFFF;
    return LockFileEx(reinterpret_cast<HANDLE>(handle_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY,
                      0, 1, 0, &place) ||
           (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING);
}

std::int64_t SequentialFile::read(char* buffer, std::size_t size, std::string& problem) {
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size, MOST_AT_ONCE));
    if (!ReadFile(reinterpret_cast<HANDLE>(handle_), buffer, wanted, &count, nullptr)) {
        problem = systemFailure().what();
        return -1;
    }
    return count;
}

void SequentialFile::close() noexcept {
    if (handle_ != NONE) {
        CloseHandle(reinterpret_cast<HANDLE>(std::exchange(handle_, NONE)));
    }
}

} // namespace Platform
} // namespace ZAV
