#include "platform/MappedFile.h"

#include "platform/windows/Handle.h"
#include "platform/windows/SystemFailure.h"
#include "platform/windows/UserOnly.h"

#include <exception>
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

/// Nobody else may open it for writing, which stands for the right to it; but it may be looked at and
/// renamed.
HANDLE openFile(const std::string& path, DWORD disposition, SECURITY_ATTRIBUTES* security) {
    return CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                       security, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
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

} // namespace

MappedFile::~MappedFile() {
    if (bytes_ != nullptr) {
        UnmapViewOfFile(bytes_);
    }
    if (handle_ != NONE) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

MappedFile::Result MappedFile::open(const std::string& path, std::size_t size, std::string_view beginning,
                                    std::string& problem) {
    return size != 0 && isEmptyOrMissing(path) ? make(path, size, beginning, problem)
                                               : openExisting(path, problem);
}

MappedFile::Result MappedFile::openExisting(const std::string& path, std::string& problem) {
    Handle file(openFile(path, OPEN_EXISTING, nullptr));
    LARGE_INTEGER size;
    if (!file.isOpen() || GetFileSizeEx(file.get(), &size) == 0) {
        return failure(problem);
    }
    handle_ = reinterpret_cast<std::intptr_t>(file.release());
    size_ = static_cast<std::size_t>(size.QuadPart);
    return map(problem) ? MAPPED : FAILED;
}

MappedFile::Result MappedFile::make(const std::string& path, std::size_t size, std::string_view beginning,
                                    std::string& problem) {
    const std::string unfinished = path + ".new";
    try {
        UserOnly userOnly;
        Handle file(openFile(unfinished, CREATE_ALWAYS, userOnly.get()));
        DWORD written = 0;
        if (!file.isOpen() || !setSize(file.get(), size) ||
            WriteFile(file.get(), beginning.data(), static_cast<DWORD>(beginning.size()), &written,
                      nullptr) == 0 ||
            MoveFileExA(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) {
            return failure(problem);
        }
        handle_ = reinterpret_cast<std::intptr_t>(file.release());
    } catch (const std::exception& exception) {
        problem = exception.what();
        return FAILED;
    }
    size_ = size;
    return map(problem) ? MADE : FAILED;
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
