#include "platform/MappedFile.h"

#include "platform/Threads.h"
#include "platform/linux/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ZAV {
namespace Platform {

namespace {

constexpr mode_t FOR_ITS_USER = 0600;

/// How often another process may replace the file while it is being opened.
constexpr int MAX_ATTEMPTS = 10;

MappedFile::Result failure(std::string& problem, int error = errno) {
    problem = std::generic_category().message(error);
    return MappedFile::FAILED;
}

int openFile(const std::string& path, int flags) {
    return moveAboveStandardStreams(
        ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, FOR_ITS_USER));
}

/// An open-file-description lock, so that the process may also open and close the file elsewhere. A forked
/// child closes its copy; retried, since one forked just before its parent died may not have done so yet.
bool lock(int file) {
    constexpr int MAX_LOOKS = 20;
    constexpr timespec BETWEEN_LOOKS = {0, 10'000'000};
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    int look = 0;
    while (fcntl(file, F_OFD_SETLK, &whole) != 0) {
        if ((errno != EACCES && errno != EAGAIN) || ++look == MAX_LOOKS) {
            return false;
        }
        nanosleep(&BETWEEN_LOOKS, nullptr);
    }
    return true;
}

/// \param mayBeOfOthers whether root accepts a file of any owner
/// \return false, with the reason, if the file must not be mapped by this process
bool isOwnFile(const struct stat& status, bool mayBeOfOthers, std::string& problem) {
    if (!S_ISREG(status.st_mode)) {
        problem = "Not a regular file";
    } else if (status.st_uid != geteuid() && (geteuid() != 0 || !mayBeOfOthers)) {
        problem = "It belongs to another user";
    }
    return problem.empty();
}

bool leadsTo(const std::string& path, const struct stat& status) {
    struct stat named;
    return stat(path.c_str(), &named) == 0 && named.st_dev == status.st_dev && named.st_ino == status.st_ino;
}

bool isEmptyOrMissing(const std::string& path) {
    struct stat named;
    return lstat(path.c_str(), &named) != 0 || (S_ISREG(named.st_mode) && named.st_size == 0);
}

bool writeBeginning(int file, std::string_view text) {
    return pwrite(file, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
}

/// \return false, with the reason, if the file is not an unfinished one left by a killed process
bool isAbandonedPart(int file, const struct stat& status, std::string_view beginning, std::string& problem) {
    constexpr std::size_t TELLING = 8; // bytes, which are the same in all beginnings
    char bytes[TELLING] = {};
    const auto size = static_cast<std::size_t>(std::max<ssize_t>(pread(file, bytes, TELLING, 0), 0));
    const bool isEmpty = std::all_of(bytes, bytes + size, [](char byte) { return byte == 0; });
    if (status.st_nlink > 1 || (!isEmpty && std::string_view(bytes, size) != beginning.substr(0, TELLING))) {
        problem = "It is in the way";
    }
    return problem.empty();
}

/// \return an error number, for example if the size exceeds a limit or the disk is full; 0 on success
int allocate(int file, std::size_t size) {
    const WriteSignalGuard guard(file, true);
    int error = ftruncate(file, 0) == 0 ? 0 : errno;
    if (error == 0) {
        do {
            error = posix_fallocate(file, 0, static_cast<off_t>(size));
        } while (error == EINTR);
    }
    errno = error; // read by the guard
    return error;
}

} // namespace

void MappedFile::close() noexcept {
    if (bytes_ != nullptr) {
        munmap(bytes_, size_);
        bytes_ = nullptr;
    }
    if (isStillOpen()) {
        ::close(static_cast<int>(handle_));
    }
    handle_ = NONE;
    size_ = 0;
}

/// Two processes may create the file at once, so each checks the path again after it has the lock.
MappedFile::Result MappedFile::open(const std::string& path, std::size_t size, std::string_view beginning,
                                    std::string& problem) {
    const NoCancellation noCancellation;
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

/// \return `FAILED` without a problem text if the file has been replaced meanwhile
MappedFile::Result MappedFile::openExisting(const std::string& path, bool mayBeOfOthers,
                                            std::string& problem) {
    FileDescriptor file(openFile(path, 0));
    struct stat status;
    if (!file.isOpen() || fstat(file.number(), &status) != 0) {
        return failure(problem);
    }
    if (!isOwnFile(status, mayBeOfOthers, problem)) {
        return FAILED;
    }
    if (!lock(file.number())) {
        return errno == EACCES || errno == EAGAIN ? IN_USE : failure(problem);
    }
    if (!leadsTo(path, status)) {
        return FAILED;
    }
    handle_ = file.release();
    size_ = static_cast<std::size_t>(status.st_size);
    return map(problem) ? MAPPED : FAILED;
}

MappedFile::Result MappedFile::make(const std::string& path, std::size_t size, std::string_view beginning,
                                    Place place, std::string& problem) {
    const std::string unfinished = path + ".new";
    FileDescriptor file(openFile(unfinished, O_CREAT));
    struct stat status;
    if (!file.isOpen() || fstat(file.number(), &status) != 0) {
        return failure(problem);
    }
    if (!isOwnFile(status, false, problem) || !isAbandonedPart(file.number(), status, beginning, problem)) {
        problem = unfinished + ": " + problem;
        return FAILED;
    }
    if (!lock(file.number())) {
        return errno == EACCES || errno == EAGAIN ? IN_USE : failure(problem);
    }
    if (!leadsTo(unfinished, status)) {
        return FAILED; // another process has just created the file
    }
    if (place == EMPTY_OR_MISSING && !isEmptyOrMissing(path)) {
        unlink(unfinished.c_str());
        return FAILED;
    }
    int error = allocate(file.number(), size);
    if (error != 0 || fchmod(file.number(), FOR_ITS_USER) != 0 || !writeBeginning(file.number(), beginning) ||
        rename(unfinished.c_str(), path.c_str()) != 0) {
        error = error != 0 ? error : errno;
        unlink(unfinished.c_str());
        return failure(problem, error);
    }
    handle_ = file.release();
    size_ = size;
    return map(problem) ? MADE : FAILED;
}

bool MappedFile::replace(const std::string& path, std::size_t size, std::string_view beginning,
                         std::string& problem) {
    const NoCancellation noCancellation;
    MappedFile made;
    if (made.make(path, size, beginning, ITS_OWN, problem) != MADE) {
        problem = problem.empty() ? path + ".new is in use" : problem;
        return false;
    }
    std::swap(handle_, made.handle_);
    std::swap(bytes_, made.bytes_);
    std::swap(size_, made.size_);
    std::swap(device_, made.device_);
    std::swap(number_, made.number_);
    return true;
}

bool MappedFile::read(std::string& content, std::string& problem) const {
    content.resize(size_);
    std::size_t size = 0;
    ssize_t count = 1;
    while (count != 0 && size < size_) {
        count =
            pread(static_cast<int>(handle_), content.data() + size, size_ - size, static_cast<off_t>(size));
        if (count < 0 && errno != EINTR) {
            failure(problem);
            return false;
        }
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    content.resize(size);
    return true;
}

bool MappedFile::makePrivate(std::string& problem) {
    if (fchmod(static_cast<int>(handle_), FOR_ITS_USER) != 0) {
        failure(problem);
    }
    return problem.empty();
}

/// Older kernels do not support this; the error is ignored.
void MappedFile::populate(std::size_t most) noexcept {
    madvise(bytes_, std::min(size_, most), MADV_POPULATE_WRITE);
}

/// The mapping keeps the lock, too, so it is replaced, at the same address, with a private one of the
/// reopened file: the child may still be reading. The program may have closed the descriptor, whose number
/// may refer to another file by now.
void MappedFile::closeInChild() noexcept {
    int reopened = -1;
    if (isStillOpen()) {
        char name[32];
        std::snprintf(name, sizeof name, "/proc/self/fd/%d", static_cast<int>(handle_));
        reopened = ::open(name, O_RDONLY | O_CLOEXEC);
        ::close(static_cast<int>(handle_));
    }
    handle_ = NONE;
    const int kind = MAP_PRIVATE | MAP_FIXED | MAP_NORESERVE | (reopened < 0 ? MAP_ANONYMOUS : 0);
    // If this fails, the old mapping stays.
    static_cast<void>(mmap(bytes_, size_, PROT_READ | PROT_WRITE, kind, reopened, 0));
    if (reopened >= 0) {
        ::close(reopened);
    }
}

bool MappedFile::isStillOpen() const noexcept {
    struct stat status;
    return handle_ != NONE && fstat(static_cast<int>(handle_), &status) == 0 && status.st_dev == device_ &&
           status.st_ino == number_;
}

bool MappedFile::isAt(const std::string& path) const noexcept {
    struct stat named;
    return stat(path.c_str(), &named) == 0 && named.st_dev == device_ && named.st_ino == number_;
}

bool MappedFile::map(std::string& problem) {
    struct stat status;
    if (fstat(static_cast<int>(handle_), &status) != 0) {
        failure(problem);
        return false;
    }
    device_ = status.st_dev;
    number_ = status.st_ino;
    void* const mapped =
        size_ == 0 ? nullptr
                   : mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(handle_), 0);
    if (mapped == MAP_FAILED) {
        failure(problem);
        return false;
    }
    bytes_ = static_cast<char*>(mapped);
    return true;
}

} // namespace Platform
} // namespace ZAV
