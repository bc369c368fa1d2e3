#include "platform/Directory.h"

#include "platform/Threads.h"

#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace ZAV {
namespace Platform {

namespace {

struct DirectoryCloser {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// A symbolic link counts as what it points to; an entry that has vanished in the meantime counts as a file.
bool isDirectory(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) {
        return entry.d_type == DT_DIR;
    }
    struct stat status;
    return fstatat(dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

bool listFiles(const std::string& directory, std::vector<std::string>& names) {
    const NoCancellation guard;
    const std::unique_ptr<DIR, DirectoryCloser> stream(opendir((directory + "/").c_str()));
    if (!stream) {
        return false;
    }
    while (const dirent* entry = readdir(stream.get())) {
        if (!isDirectory(stream.get(), *entry)) {
            names.push_back(entry->d_name);
        }
    }
    return true;
}

} // namespace Platform
} // namespace ZAV
