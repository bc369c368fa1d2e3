// Packing one file.

#include "log/appenders/Packer.h"
#include "log/appenders/RolledFiles.h"
#include "platform/Files.h"
#include "platform/OpenFiles.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <zlib.h>

namespace ZAV {
namespace Log {

namespace {

constexpr int GZIP_FORMAT = 16; ///< added to zlib's window bits to select the gzip format
constexpr std::size_t BLOCK = std::size_t{64} * 1024;

/// One attempt to pack a file into another one.
class GzipWriter {
public:
    GzipWriter() { active = this; }
    ~GzipWriter() {
        active = nullptr;
        deflateEnd(&stream_);
    }
    GzipWriter(const GzipWriter&) = delete;
    GzipWriter& operator=(const GzipWriter&) = delete;

    bool open(const std::string& path) { return source_.open(path, problem_); }

    /// \return false if another process has locked the open file
    bool reserve() noexcept { return source_.reserve(); }

    /// The source stays open and locked.
    /// \return whether the whole file was packed
    bool write(const std::string& target, const Platform::FileRules& rules,
               const std::atomic<bool>& isInterrupted) {
        if (deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + GZIP_FORMAT,
                         MAX_MEM_LEVEL - 1, Z_DEFAULT_STRATEGY) != Z_OK) {
            problem_ = "zlib has no memory";
        }
        if (!problem_.empty()) {
            return false;
        }
        target_.open(target, Platform::OutputFile::CREATE, rules);
        bool isAtEnd = false;
        while (!isAtEnd && problem_.empty() && !target_.hasFailed() && !isInterrupted) {
            isAtEnd = writeBlock();
        }
        target_.close();
        if (target_.hasFailed()) {
            problem_ = "Unable to write " + target;
        }
        return isAtEnd && problem_.empty();
    }

    void closeFiles() noexcept {
        source_.close();
        target_.close();
    }

    /// \return how many bytes of the file were packed
    std::uint64_t size() const { return size_; }
    const std::string& problem() const { return problem_; }

    static GzipWriter* active; ///< the only instance, or null

private:
    /// \return whether the end of the file was reached
    bool writeBlock() {
        const std::int64_t count = source_.read(input_.data(), input_.size(), problem_);
        if (count < 0) {
            return false;
        }
        size_ += static_cast<std::uint64_t>(count);
        stream_.next_in = reinterpret_cast<Bytef*>(input_.data());
        stream_.avail_in = static_cast<uInt>(count);
        do {
            stream_.next_out = reinterpret_cast<Bytef*>(output_.data());
            stream_.avail_out = static_cast<uInt>(output_.size());
            deflate(&stream_, count == 0 ? Z_FINISH : Z_NO_FLUSH);
            target_.writeBytes(std::string_view(output_.data(), output_.size() - stream_.avail_out));
        } while (stream_.avail_out == 0 && !target_.hasFailed());
        return count == 0;
    }

    z_stream stream_{};
    Platform::SequentialFile source_;
    Platform::OutputFile target_;
    std::uint64_t size_ = 0;
    std::string problem_;
    std::array<char, BLOCK> input_;
    std::array<char, BLOCK> output_;
};

GzipWriter* GzipWriter::active = nullptr;

PackingResult failure(const std::string& path, const std::string& problem) {
    return {PackingResult::FAILED, "Unable to pack the file: " + path + ": " + problem};
}

/// \return nothing if the file has grown, and must be packed again
std::optional<PackingResult> tryToPack(const std::string& path, const std::atomic<bool>& isInterrupted) {
    const std::optional<Platform::FileStatus> status = Platform::statFile(path);
    const auto writer = std::make_unique<GzipWriter>();
    if (!status || !writer->open(path)) {
        return Platform::isTaken(path) ? failure(path, status ? writer->problem() : "Not a regular file")
                                       : PackingResult{PackingResult::DONE, ""};
    }
    if (!writer->reserve()) {
        return PackingResult{PackingResult::DONE, ""};
    }
    const std::string part = path + RolledFiles::PART;
    Platform::removeFile(part);
    std::optional<PackingResult> packing;
    if (writer->write(part, {status->permissions, false}, isInterrupted)) {
        packing = replaceByPacked(path, writer->size());
    } else if (writer->problem().empty()) {
        packing = PackingResult{PackingResult::INTERRUPTED, ""};
    } else {
        packing = failure(path, writer->problem());
    }
    if (packing && packing->result != PackingResult::DONE) {
        Platform::removeFile(part);
    }
    const bool isGone = !Platform::isTaken(path); // deleted for the limits of the series
    return packing && packing->result == PackingResult::FAILED && isGone
               ? PackingResult{PackingResult::DONE, ""}
               : packing;
}

} // namespace

void removeAbandonedPart(const std::string& path) {
    Platform::SequentialFile plain;
    std::string problem;
    if (!plain.open(path, problem) || plain.reserve()) {
        Platform::removeFile(path + RolledFiles::PART);
    }
}

/// A packed file in place is never deleted here: another process may have deleted the plain file in its
/// favour.
std::optional<PackingResult> replaceByPacked(const std::string& path, std::uint64_t size) {
    const std::string part = path + RolledFiles::PART;
    if (!Platform::isTaken(path)) {
        Platform::removeFile(part); // the plain file was meanwhile deleted for the limits of the series
        return PackingResult{PackingResult::DONE, ""};
    }
    if (!Platform::renameOver(part, path + RolledFiles::PACKED)) {
        return failure(path, "Unable to rename " + part);
    }
    const std::optional<Platform::FileStatus> status = Platform::statFile(path);
    if (status && status->size != size) {
        return std::nullopt;
    }
    const bool isGone = Platform::removeFile(path) || !Platform::isTaken(path);
    return isGone ? PackingResult{PackingResult::DONE, ""} : failure(path, "Unable to delete it");
}

PackingResult packFile(const std::string& path, const std::atomic<bool>& isInterrupted) {
    for (;;) {
        if (const std::optional<PackingResult> packing = tryToPack(path, isInterrupted)) {
            return *packing;
        }
    }
}

void closePackedFilesInChild() noexcept {
    if (GzipWriter::active != nullptr) {
        GzipWriter::active->closeFiles();
    }
}

} // namespace Log
} // namespace ZAV
