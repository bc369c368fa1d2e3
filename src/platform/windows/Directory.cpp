#include "platform/Directory.h"

#include <memory>
#include <windows.h>

namespace ZAV {
namespace Platform {

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

} // namespace Platform
} // namespace ZAV
