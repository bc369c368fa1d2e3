#include "inputs/LogContent.h"

#include "inputs/QueueLines.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>
#include <zlib.h>

namespace ZAV {
namespace Tools {

namespace {

using namespace std::literals;

constexpr int GZIP_FORMAT = 16; ///< added to zlib's window bits to select gzip
constexpr std::size_t BLOCK = std::size_t{64} * 1024;
constexpr std::string_view GZIP_BEGINNING = "\x1f\x8b"sv;

/// The first bytes of files of bzip2, xz, Zstandard, LZ4 and ZIP.
constexpr std::string_view OTHER_BEGINNINGS[] = {"BZh"sv,
                                                 "\xfd"
                                                 "7zXZ\0"sv,
                                                 "\x28\xb5\x2f\xfd"sv, "\x04\x22\x4d\x18"sv, "PK\x03\x04"sv};

} // namespace

/// Unpacks a gzip file. Like gzip, it takes concatenated packed files for one and ignores other data
/// after them.
class Unpacker {
public:
    /// \param beginning of the packed file, if that was read already
    explicit Unpacker(std::string beginning) : packed_(BLOCK), first_(std::move(beginning)) {
        inflateInit2(&stream_, MAX_WBITS + GZIP_FORMAT);
        begin();
    }
    ~Unpacker() { inflateEnd(&stream_); }
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;

    bool isAtEnd() const { return isAtEnd_; }

    std::int64_t readAt(const Platform::InputFile& file, std::uint64_t offset, char* buffer, std::size_t size,
                        std::string& problem) {
        if (offset < place_) {
            begin();
        }
        while (place_ < offset) {
            char skipped[4096];
            const auto wanted = std::min<std::uint64_t>(offset - place_, sizeof skipped);
            const std::int64_t count = read(file, skipped, static_cast<std::size_t>(wanted), problem);
            if (count <= 0) {
                return count;
            }
        }
        return read(file, buffer, size, problem);
    }

private:
    void begin() {
        inflateReset(&stream_);
        packed_.resize(std::max(packed_.size(), first_.size()));
        std::copy(first_.begin(), first_.end(), packed_.begin());
        stream_.next_in = reinterpret_cast<Bytef*>(packed_.data());
        stream_.avail_in = static_cast<uInt>(first_.size());
        packedPlace_ = first_.size();
        place_ = 0;
        isBetween_ = false;
        isAtEnd_ = false;
    }

    /// \return as `InputFile::readAt`
    std::int64_t read(const Platform::InputFile& file, char* buffer, std::size_t size, std::string& problem) {
        stream_.next_out = reinterpret_cast<Bytef*>(buffer);
        stream_.avail_out = static_cast<uInt>(size);
        while (stream_.avail_out == size && size > 0 && !isAtEnd_) {
            if (stream_.avail_in < GZIP_BEGINNING.size() && !fill(file, problem)) {
                return problem.empty() ? 0 : -1;
            }
            if (!isAtEnd_ && !unpack(problem)) {
                return -1;
            }
        }
        const std::size_t count = size - stream_.avail_out;
        place_ += count;
        return static_cast<std::int64_t>(count);
    }

    /// \return false if no more data is available now
    bool fill(const Platform::InputFile& file, std::string& problem) {
        std::memmove(packed_.data(), stream_.next_in, stream_.avail_in);
        stream_.next_in = reinterpret_cast<Bytef*>(packed_.data());
        const std::int64_t count = file.readAt(packedPlace_, packed_.data() + stream_.avail_in,
                                               packed_.size() - stream_.avail_in, problem);
        if (count > 0) {
            packedPlace_ += static_cast<std::uint64_t>(count);
            stream_.avail_in += static_cast<uInt>(count);
            return true;
        }
        const bool mayGoOn = count == 0 && !file.isSeekable() && !file.hasEnded();
        if (count < 0 || mayGoOn || stream_.avail_in > 0) {
            return count == 0 && !mayGoOn;
        }
        isAtEnd_ = isBetween_;
        problem = isAtEnd_ ? "" : "The packed file has no end";
        return isAtEnd_;
    }

    bool unpack(std::string& problem) {
        if (isBetween_) {
            const std::string_view next(reinterpret_cast<const char*>(stream_.next_in), stream_.avail_in);
            isAtEnd_ = next.substr(0, GZIP_BEGINNING.size()) != GZIP_BEGINNING;
            if (isAtEnd_) {
                return true;
            }
            inflateReset(&stream_);
            isBetween_ = false;
        }
        const int result = inflate(&stream_, Z_NO_FLUSH);
        isBetween_ = result == Z_STREAM_END;
        if (result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR) {
            return true;
        }
        problem = "The packed file is damaged";
        return false;
    }

    z_stream stream_{};
    std::vector<char> packed_;
    const std::string first_;
    std::uint64_t packedPlace_ = 0; ///< read so far from the file
    std::uint64_t place_ = 0;       ///< handed out so far of its content
    bool isBetween_ = false;        ///< after one packed file, while it is unknown whether another follows
    bool isAtEnd_ = false;
};

LogContent::LogContent() noexcept = default;
LogContent::~LogContent() = default;
LogContent::LogContent(LogContent&& other) noexcept = default;
LogContent& LogContent::operator=(LogContent&& other) noexcept = default;

bool LogContent::open(const std::string& path, std::string& problem, Links links) {
    close();
    if (!file_.open(path, problem, links) || !detectFormat(problem)) {
        return false;
    }
    detectQueue();
    return true;
}

void LogContent::detectQueue() {
    char beginning[QUEUE_BEGINNING];
    std::string ignored;
    const std::int64_t count = file_.readAt(0, beginning, sizeof beginning, ignored);
    if (count == sizeof beginning && beginsQueue({beginning, sizeof beginning})) {
        queue_ = std::make_shared<QueueLines>(file_);
    }
}

bool LogContent::openStandardInput(std::string& problem) {
    close();
    return file_.openStandardInput(problem) && (!file_.isSeekable() || detectFormat(problem));
}

LogContent LogContent::duplicate() const {
    LogContent copy;
    copy.file_ = file_.duplicate();
    copy.formatKnown_ = formatKnown_;
    copy.unpacker_ = unpacker_ != nullptr ? std::make_unique<Unpacker>("") : nullptr;
    copy.queue_ = queue_;
    return copy;
}

/// \return false if the form cannot be told yet, or if reading fails
bool LogContent::detectFormat(std::string& problem) const {
    const bool isPipe = !file_.isSeekable();
    bool mayBePacked = isPipe || file_.position() == 0;
    std::int64_t count = 1;
    while (mayBePacked && count > 0 && beginning_.size() < GZIP_BEGINNING.size()) {
        char bytes[GZIP_BEGINNING.size()];
        count = file_.readAt(beginning_.size(), bytes, sizeof bytes - beginning_.size(), problem);
        beginning_.append(bytes, static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
        mayBePacked = GZIP_BEGINNING.substr(0, beginning_.size()) == beginning_;
    }
    if (count < 0 || (isPipe && mayBePacked && count == 0 && !file_.hasEnded())) {
        return false;
    }
    formatKnown_ = true;
    if (beginning_ == GZIP_BEGINNING) {
        unpacker_ = std::make_unique<Unpacker>(isPipe ? beginning_ : "");
    }
    if (!isPipe || isPacked()) {
        beginning_.clear();
    }
    return true;
}

bool LogContent::isPackedOtherwise(std::string& problem) const {
    if (!isSeekable() || isPacked()) {
        return false;
    }
    char bytes[8];
    std::string ignored;
    const std::int64_t count = readAt(0, bytes, sizeof bytes, ignored);
    const std::string_view beginning(bytes, static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
    const bool isKnown = std::any_of(
        std::begin(OTHER_BEGINNINGS), std::end(OTHER_BEGINNINGS),
        [beginning](std::string_view known) { return beginning.substr(0, known.size()) == known; });
    if (isKnown) {
        problem = "Is a packed file; unpack it first, or read what its unpacker writes from standard input";
    }
    return isKnown;
}

std::int64_t LogContent::readAt(std::uint64_t offset, char* buffer, std::size_t size,
                                std::string& problem) const {
    if (!formatKnown_ && size > 0 && !detectFormat(problem)) {
        return problem.empty() ? 0 : -1;
    }
    if (isQueue()) {
        return readQueue(offset, buffer, size, problem);
    }
    if (isPacked()) {
        return unpacker_->readAt(file_, offset, buffer, size, problem);
    }
    if (!beginning_.empty()) {
        const std::size_t count = beginning_.copy(buffer, size);
        beginning_.erase(0, count);
        return static_cast<std::int64_t>(count);
    }
    return file_.readAt(offset, buffer, size, problem);
}

/// Missing lines are reported at the end.
std::int64_t LogContent::readQueue(std::uint64_t offset, char* buffer, std::size_t size,
                                   std::string& problem) const {
    const std::string& text = queue_->text;
    const std::size_t count =
        offset < text.size() ? text.copy(buffer, size, static_cast<std::size_t>(offset)) : 0;
    if (count == 0 && size > 0 && !queue_->problem.empty()) {
        problem = queue_->problem;
        return -1;
    }
    return static_cast<std::int64_t>(count);
}

bool LogContent::hasEnded() const noexcept {
    return file_.hasEnded() && beginning_.empty() && (unpacker_ == nullptr || unpacker_->isAtEnd());
}

void LogContent::close() noexcept {
    file_.close();
    unpacker_.reset();
    queue_.reset();
    beginning_.clear();
    formatKnown_ = false;
}

} // namespace Tools
} // namespace ZAV
