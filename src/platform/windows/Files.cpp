#include "platform/Files.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <system_error>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

bool readFile(const std::string& path, std::string& text) {
    std::ifstream file(path);
    char part[4096];
    while (file.read(part, sizeof part), file.gcount() > 0) {
        text.append(part, static_cast<std::size_t>(file.gcount()));
    }
    return file.is_open() && !file.bad();
}

bool renameFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0; // does not overwrite on Windows
}

bool renameOver(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

std::string absolutePath(const std::string& folder) {
    const DWORD size = folder.empty() ? 0 : GetFullPathNameA(folder.c_str(), 0, nullptr, nullptr);
    std::string absolute(size, '\0'); // including the NUL
    const DWORD length = size == 0 ? 0 : GetFullPathNameA(folder.c_str(), size, &absolute[0], nullptr);
    absolute.resize(length < size ? length : 0);
    return absolute.empty() ? folder : absolute;
}

std::optional<FileStatus> statFile(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA file;
    constexpr DWORD OTHERS = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &file) ||
        (file.dwFileAttributes & OTHERS) != 0) {
        return std::nullopt;
    }
    return FileStatus{std::uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow, std::nullopt};
}

bool isTaken(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool removeFile(const std::string& path) {
    return std::remove(path.c_str()) == 0;
}

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

FileLock::FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, NONE)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

FileLock::~FileLock() {
    if (handle_ != NONE) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

/// Opening the file without sharing serves as the lock.
FileLock::Result FileLock::acquire(const std::string& path, std::string& problem) {
    if (handle_ != NONE) {
        return HELD;
    }
    const HANDLE handle = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        handle_ = reinterpret_cast<std::intptr_t>(handle);
        return HELD;
    }
    const DWORD error = GetLastError();
    problem = std::system_category().message(static_cast<int>(error));
    return error == ERROR_SHARING_VIOLATION ? HELD_BY_ANOTHER : CANNOT_BE_DECIDED;
}

namespace {

struct SearchCloser {
    using pointer = HANDLE;
    void operator()(HANDLE search) const { FindClose(search); }
};

bool isDirectory(const WIN32_FIND_DATAA& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

bool listFiles(const std::string& directory, std::vector<std::string>& names) {
    const std::string pattern = directory + "/*";
    WIN32_FIND_DATAA entry;
    const HANDLE first = FindFirstFileA(pattern.c_str(), &entry);
    if (first == INVALID_HANDLE_VALUE) {
        return false;
    }
    const std::unique_ptr<HANDLE, SearchCloser> search(first);
    do {
        if (!isDirectory(entry)) {
            names.push_back(entry.cFileName);
        }
    } while (FindNextFileA(search.get(), &entry));
    return true;
}

namespace {

/// \return false, with the reason in `GetLastError`, if the access is not granted
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

/// For a file, the same right is that to read it.
bool isReadableDirectory(const std::string& directory, std::string& problem) {
    const DWORD attributes = GetFileAttributesA(directory.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        SetLastError(ERROR_DIRECTORY);
    } else if (isGranted(directory, FILE_LIST_DIRECTORY)) {
        return true;
    }
    problem = std::system_category().message(static_cast<int>(GetLastError()));
    return false;
}

} // namespace Platform
} // namespace ZAV
