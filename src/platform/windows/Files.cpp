#include "platform/Files.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <windows.h>

namespace ZAV {
namespace Platform {

bool readFile(const std::string& path, std::string& text) {
    std::ifstream file(path);
    text.append(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return file.is_open() && !file.bad();
}

bool renameFile(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0; // which overwrites nothing here
}

bool renameOver(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

std::string absolutePath(const std::string& folder) {
    const DWORD size = folder.empty() ? 0 : GetFullPathNameA(folder.c_str(), 0, nullptr, nullptr);
    std::string absolute(size, '\0'); // with its end
    const DWORD length = size == 0 ? 0 : GetFullPathNameA(folder.c_str(), size, &absolute[0], nullptr);
    absolute.resize(length < size ? length : 0);
    return absolute.empty() ? folder : absolute;
}

std::optional<FileStatus> lookAtFile(const std::string& path) {
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

} // namespace Platform
} // namespace ZAV
