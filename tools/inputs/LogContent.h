#pragma once

#include "platform/OpenFiles.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace ZAV {
namespace Tools {

class Unpacker;
struct QueueLines;

/// The content of a log file as its appender wrote it: that of a gzip file is unpacked, and that of a queue
/// file is made of the lines of the messages that wait in it when it is opened. Otherwise like an
/// `InputFile`.
class LogContent {
public:
    using Links = Platform::InputFile::Links;

    LogContent() noexcept;
    ~LogContent();
    LogContent(LogContent&& other) noexcept;
    LogContent& operator=(LogContent&& other) noexcept;

    bool open(const std::string& path, std::string& problem, Links links = Links::FOLLOWED);
    bool openStandardInput(std::string& problem);
    LogContent duplicate() const;

    /// Going back in a packed file means unpacking it again from its beginning.
    std::int64_t readAt(std::uint64_t offset, char* buffer, std::size_t size, std::string& problem) const;

    /// \return whether the content differs from the bytes on the disk, so that its size is not known; for a pipe, valid
    ///         once something was read
    bool isPacked() const { return unpacker_ != nullptr || isQueue(); }

    /// \return whether it is a queue file, whose lines are of `json`
    bool isQueue() const { return queue_ != nullptr; }

    /// Recognises a file packed by anything but gzip from its first bytes: its content is no log until it is
    /// unpacked. Pipes are not examined.
    /// \param problem receives what to do about it
    bool isPackedOtherwise(std::string& problem) const;

    bool isSeekable() const { return file_.isSeekable(); }
    bool hasEnded() const noexcept;
    std::uint64_t position() const { return isPacked() ? 0 : file_.position(); }
    std::uint64_t size() const { return file_.size(); } ///< on the disk
    Platform::FileIdentity identity() const { return file_.identity(); }
    bool isOpen() const noexcept { return file_.isOpen(); }
    void close() noexcept;

private:
    bool detectFormat(std::string& problem) const;
    void detectQueue();
    std::int64_t readQueue(std::uint64_t offset, char* buffer, std::size_t size, std::string& problem) const;

    Platform::InputFile file_;
    mutable std::unique_ptr<Unpacker> unpacker_;
    std::shared_ptr<const QueueLines> queue_;
    mutable std::string beginning_; ///< of a pipe, read already and not yet handed out
    mutable bool formatKnown_ = false;
};

} // namespace Tools
} // namespace ZAV
