#include "platform/MappedFile.h"

#include "platform/windows/Handle.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

MappedFile::Result failure(std::string& problem, DWORD error = GetLastError()) {
    if (error == ERROR_SHARING_VIOLATION) {
        return MappedFile::IN_USE;
    }
    problem = systemFailure(error).what();
    return MappedFile::FAILED;
}

/// How often another process may replace the file while it is being opened.
constexpr int MAX_ATTEMPTS = 10;

constexpr std::size_t LARGEST_READ = std::size_t{64} * 1024 * 1024;

/// Nobody else may open it for writing, which serves as the lock; reading and renaming stay possible.
HANDLE openFile(const std::string& path, DWORD disposition, SECURITY_ATTRIBUTES* security) {
    return CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                       security, disposition, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool isEmptyOrMissing(const std::string& path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) == 0 ||
           ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && data.nFileSizeHigh == 0 &&
            data.nFileSizeLow == 0);
}

bool setSize(HANDLE file, std::size_t size) {
    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(size);
    const LARGE_INTEGER begin = {};
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0 &&
           SetFilePointerEx(file, begin, nullptr, FILE_BEGIN) != 0;
}

/// Deletes an unfinished file that a killed process left. One that another process is making is in use, and
/// any other file stays, as a link does.
/// \return the system's error; none if another kind of file is there
DWORD deleteAbandoned(const std::string& path, std::string_view beginning, std::string& problem) {
    constexpr std::size_t TELLING = 8; // bytes, which are the same in all beginnings
    const Handle file(CreateFileA(path.c_str(), GENERIC_READ | DELETE, 0, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION status;
    char bytes[TELLING] = {};
    DWORD size = 0;
    if (!file.isOpen() || GetFileInformationByHandle(file.get(), &status) == 0 ||
        ReadFile(file.get(), bytes, TELLING, &size, nullptr) == 0) {
        return GetLastError();
    }
    const bool isLink = (status.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    const bool isEmpty = std::all_of(bytes, bytes + size, [](char byte) { return byte == 0; });
    if (isLink || (!isEmpty && std::string_view(bytes, size) != beginning.substr(0, TELLING))) {
        problem = path + ": It is in the way";
        return ERROR_SUCCESS;
    }
    FILE_DISPOSITION_INFO deleted = {TRUE};
    const BOOL isDeleted =
        SetFileInformationByHandle(file.get(), FileDispositionInfo, &deleted, sizeof deleted);
    return isDeleted != 0 ? ERROR_SUCCESS : GetLastError();
}

/// \param error receives the system's error if the file is not open; none if another process has just made one
/// \return the unfinished file, which only this process may write; not open on failure
Handle createUnfinished(const std::string& path, std::string_view beginning, DWORD& error,
                        std::string& problem) {
    UserOnly userOnly;
    Handle file(openFile(path, CREATE_NEW, userOnly.get()));
    error = file.isOpen() ? ERROR_SUCCESS : GetLastError();
    if (error != ERROR_FILE_EXISTS) {
        return file;
    }
    error = deleteAbandoned(path, beginning, problem);
    if (problem.empty() && (error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND)) {
        file = Handle(openFile(path, CREATE_NEW, userOnly.get()));
        error = file.isOpen() ? ERROR_SUCCESS : GetLastError();
        error = error == ERROR_FILE_EXISTS ? ERROR_SUCCESS : error;
    }
    return file;
}

} // namespace

void MappedFile::close() noexcept {
    if (bytes_ != nullptr) {
        UnmapViewOfFile(std::exchange(bytes_, nullptr));
    }
    if (handle_ != NONE) {
        CloseHandle(reinterpret_cast<HANDLE>(std::exchange(handle_, NONE)));
    }
    size_ = 0;
}

MappedFile::Result MappedFile::open(const std::string& path, std::size_t size, std::string_view beginning,
                                    std::string& problem) {
    for (int attempt = 0; attempt < MAX_ATTEMPTS; ++attempt) {
        const Result result = size != 0 && isEmptyOrMissing(path)
                                  ? make(path, size, beginning, EMPTY_OR_MISSING, problem)
                                  : openExisting(path, size == 0, problem);
        if (result != FAILED || !problem.empty()) {
            return result;
        }
    }
    problem = "It is replaced again and again";
    return FAILED;
}

MappedFile::Result MappedFile::openExisting(const std::string& path, bool, std::string& problem) {
    Handle file(openFile(path, OPEN_EXISTING, nullptr));
    LARGE_INTEGER size;
    if (!file.isOpen() || GetFileSizeEx(file.get(), &size) == 0) {
        return failure(problem);
    }
    handle_ = reinterpret_cast<std::intptr_t>(file.release());
    size_ = static_cast<std::size_t>(size.QuadPart);
    return map(problem) ? MAPPED : FAILED;
}

/// One process at a time has the unfinished file open, and checks again whether another has created the file.
/// \return `FAILED` without a problem text if so
MappedFile::Result MappedFile::make(const std::string& path, std::size_t size, std::string_view beginning,
                                    Place place, std::string& problem) {
    const std::string unfinished = path + ".new";
    try {
        DWORD error = ERROR_SUCCESS;
        Handle file = createUnfinished(unfinished, beginning, error, problem);
        if (!file.isOpen()) {
            return error == ERROR_SUCCESS ? FAILED : failure(problem, error);
        }
        if (place == EMPTY_OR_MISSING && !isEmptyOrMissing(path)) {
            DeleteFileA(unfinished.c_str());
            return FAILED;
        }
        DWORD written = 0;
        if (!setSize(file.get(), size) ||
            WriteFile(file.get(), beginning.data(), static_cast<DWORD>(beginning.size()), &written,
                      nullptr) == 0 ||
            MoveFileExA(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) {
            error = GetLastError();
            DeleteFileA(unfinished.c_str());
            return failure(problem, error);
        }
        handle_ = reinterpret_cast<std::intptr_t>(file.release());
    } catch (const std::exception& exception) {
        problem = exception.what();
        return FAILED;
    }
    size_ = size;
    return map(problem) ? MADE : FAILED;
}

/// Neither a mapped nor an open file can be replaced, so it is closed first.
bool MappedFile::replace(const std::string& path, std::size_t size, std::string_view beginning,
                         std::string& problem) {
    MappedFile made;
    close();
    if (made.make(path, size, beginning, ITS_OWN, problem) != MADE) {
        problem = problem.empty() ? path + ".new is in use" : problem;
        std::string ignored;
        openExisting(path, true, ignored);
        return false;
    }
    std::swap(handle_, made.handle_);
    std::swap(bytes_, made.bytes_);
    std::swap(size_, made.size_);
    return true;
}

bool MappedFile::read(std::string& content, std::string& problem) const {
    content.resize(size_);
    std::size_t size = 0;
    DWORD count = 1;
    while (count != 0 && size < size_) {
        OVERLAPPED place = {};
        place.Offset = static_cast<DWORD>(size);
        place.OffsetHigh = static_cast<DWORD>(static_cast<std::uint64_t>(size) >> 32U);
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(size_ - size, LARGEST_READ));
        if (ReadFile(reinterpret_cast<HANDLE>(handle_), content.data() + size, wanted, &count, &place) == 0) {
            failure(problem);
            return false;
        }
        size += count;
    }
    content.resize(size);
    return true;
}

/// An existing file keeps its access rights.
bool MappedFile::makePrivate(std::string&) {
    return true;
}

void MappedFile::populate(std::size_t) noexcept {}

/// There are no forked children.
void MappedFile::closeInChild() noexcept {}

/// The system may not report the volume of a file that was renamed while open, hence the check for 0.
bool MappedFile::isAt(const std::string& path) const noexcept {
    const Handle named(CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                   nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION there;
    BY_HANDLE_FILE_INFORMATION own;
    return named.isOpen() && GetFileInformationByHandle(named.get(), &there) != 0 &&
           GetFileInformationByHandle(reinterpret_cast<HANDLE>(handle_), &own) != 0 &&
           (there.dwVolumeSerialNumber == own.dwVolumeSerialNumber || own.dwVolumeSerialNumber == 0) &&
           there.nFileIndexHigh == own.nFileIndexHigh && there.nFileIndexLow == own.nFileIndexLow;
}

/// Unlike a descriptor, the handle is not closed by others.
bool MappedFile::isStillOpen() const noexcept {
    return handle_ != NONE;
}

bool MappedFile::map(std::string& problem) {
    if (size_ == 0) {
        return true;
    }
    const Handle mapping(
        CreateFileMappingA(reinterpret_cast<HANDLE>(handle_), nullptr, PAGE_READWRITE, 0, 0, nullptr));
    void* const view = mapping.isOpen() ? MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0) : nullptr;
    if (view == nullptr) {
        failure(problem);
        return false;
    }
    bytes_ = static_cast<char*>(view);
    return true;
}

} // namespace Platform
} // namespace ZAV
