#include "platform/OpenFiles.h"

#include "platform/Terminal.h"
#include "platform/windows/Handle.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

constexpr std::size_t LARGEST_READ = 1024 * 1024 * 1024;

HANDLE toHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

std::string describe(DWORD error) {
    return std::system_category().message(static_cast<int>(error));
}

/// Others may still write, rename and delete the file: a log must be rotatable while it is read.
HANDLE openShared(const std::string& path, DWORD access, DWORD flags = 0) {
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | flags, nullptr);
}

/// \return why it cannot be read as a file; empty if it can
std::string reasonNotReadable(HANDLE handle, InputFile::Links links) {
    BY_HANDLE_FILE_INFORMATION information;
    if (GetFileType(handle) != FILE_TYPE_DISK || !GetFileInformationByHandle(handle, &information)) {
        return "Not a regular file";
    }
    const bool isLink = (information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return isLink && links == InputFile::Links::REFUSED ? "Is a symbolic link" : "";
}

/// \return whether it is a pipe that somebody can still write to, or that is not read to its end
bool isOpenPipe(HANDLE handle, DWORD& available) {
    return GetFileType(handle) == FILE_TYPE_PIPE &&
           PeekNamedPipe(handle, nullptr, 0, nullptr, &available, nullptr);
}

bool isEmptyPipe(HANDLE handle) {
    DWORD available = 0;
    return isOpenPipe(handle, available) && available == 0;
}

bool identify(HANDLE handle, FileIdentity& identity) {
    BY_HANDLE_FILE_INFORMATION information;
    if (!GetFileInformationByHandle(handle, &information)) {
        return false;
    }
    identity = {information.dwVolumeSerialNumber,
                (static_cast<std::uint64_t>(information.nFileIndexHigh) << 32) | information.nFileIndexLow};
    return true;
}

/// \return the current offset of an open file; 0 for a pipe
std::uint64_t positionOf(HANDLE handle) {
    LARGE_INTEGER place = {};
    return GetFileType(handle) == FILE_TYPE_DISK && SetFilePointerEx(handle, {}, &place, FILE_CURRENT)
               ? static_cast<std::uint64_t>(place.QuadPart)
               : 0;
}

} // namespace

bool identifyFile(const std::string& path, FileIdentity& identity) {
    const HANDLE handle = openShared(path, FILE_READ_ATTRIBUTES);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool identified = identify(handle, identity);
    CloseHandle(handle);
    return identified;
}

InputFile::InputFile(InputFile&& other) noexcept
    : handle_(std::exchange(other.handle_, NONE)), position_(other.position_), hasEnded_(other.hasEnded_) {}

InputFile& InputFile::operator=(InputFile&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(position_, other.position_);
    std::swap(hasEnded_, other.hasEnded_);
    return *this;
}

bool InputFile::open(const std::string& path, std::string& problem, Links links) {
    close();
    position_ = 0;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        problem = "Is a directory";
        return false;
    }
    const DWORD noLink = links == Links::REFUSED ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
    const HANDLE handle = openShared(path, GENERIC_READ, noLink);
    if (handle == INVALID_HANDLE_VALUE) {
        problem = describe(GetLastError());
        return false;
    }
    handle_ = reinterpret_cast<std::intptr_t>(handle);
    problem = reasonNotReadable(handle, links);
    if (!problem.empty()) {
        close();
    }
    return isOpen();
}

bool InputFile::openStandardInput(std::string& problem) {
    close();
    HANDLE handle = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_INPUT_HANDLE), GetCurrentProcess(), &handle, 0,
                         FALSE, DUPLICATE_SAME_ACCESS)) {
        problem = describe(GetLastError());
        return false;
    }
    handle_ = reinterpret_cast<std::intptr_t>(handle);
    position_ = positionOf(handle);
    return true;
}

InputFile InputFile::duplicate() const {
    InputFile copy;
    copy.position_ = position_;
    HANDLE handle = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), toHandle(handle_), GetCurrentProcess(), &handle, 0, FALSE,
                        DUPLICATE_SAME_ACCESS)) {
        copy.handle_ = reinterpret_cast<std::intptr_t>(handle);
    }
    return copy;
}

/// Skips empty writes to a pipe, which read as 0 bytes like its end.
std::int64_t InputFile::readAt(std::uint64_t offset, char* buffer, std::size_t size,
                               std::string& problem) const {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    const DWORD wanted = static_cast<DWORD>(std::min(size, LARGEST_READ));
    DWORD count = 0;
    DWORD available = 0;
    bool isEmptyWrite = true;
    while (isEmptyWrite) {
        if (catchesStopSignals() && isEmptyPipe(toHandle(handle_))) {
            return 0;
        }
        if (!ReadFile(toHandle(handle_), buffer, wanted, &count, isSeekable() ? &place : nullptr)) {
            const DWORD error = GetLastError();
            if (error != ERROR_HANDLE_EOF && error != ERROR_BROKEN_PIPE) {
                problem = describe(error);
                return -1;
            }
            hasEnded_ = hasEnded_ || !isSeekable();
            return 0;
        }
        isEmptyWrite = count == 0 && wanted > 0 && isOpenPipe(toHandle(handle_), available);
    }
    hasEnded_ = hasEnded_ || (count == 0 && wanted > 0 && !isSeekable());
    return count;
}

bool InputFile::isSeekable() const {
    return GetFileType(toHandle(handle_)) == FILE_TYPE_DISK;
}

std::uint64_t InputFile::size() const {
    LARGE_INTEGER size;
    return GetFileSizeEx(toHandle(handle_), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

FileIdentity InputFile::identity() const {
    FileIdentity identity;
    identify(toHandle(handle_), identity);
    return identity;
}

void InputFile::close() noexcept {
    if (isOpen()) {
        CloseHandle(toHandle(std::exchange(handle_, NONE)));
    }
}

namespace {

constexpr std::size_t MAX_AT_ONCE = std::size_t{1024} * 1024;

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

/// The locked byte is beyond the end of any file, so that no read or write is refused.
bool SequentialFile::reserve() noexcept {
    OVERLAPPED place = {};
    place.OffsetHigh = 0x7FFFFFFF;
    return LockFileEx(reinterpret_cast<HANDLE>(handle_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY,
                      0, 1, 0, &place) ||
           (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING);
}

std::int64_t SequentialFile::read(char* buffer, std::size_t size, std::string& problem) {
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size, MAX_AT_ONCE));
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
