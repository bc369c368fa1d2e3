#pragma once

#include "log/Appender.h"
#include "platform/CriticalSection.h"
#include "platform/OpenFiles.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

/// An appender to files that can write all lines of one round of the consumer at once.
///
/// Between `beginRound` and `endRound` it buffers lines, so that failures show only later; `takeFailed`
/// returns the lines that did not reach the file. Outside a round it writes each line immediately.
class BatchAppender : public Appender {
public:
    /// Large enough that hardly any round needs a second write.
    static constexpr std::size_t LARGEST_BATCH = std::size_t{1024} * 1024;

    /// A buffered line.
    struct Line {
        std::uint64_t number; ///< of its message in the queue
        std::size_t end;      ///< its end in the text of all buffered lines; 0 once it has failed
    };

    /// Lines that did not reach the file, oldest first.
    struct Failed {
        std::vector<Line> lines;
        std::exception_ptr reason; ///< as `doOutput` would have thrown it for each of them
    };

    /// \param writesBatches whether the consumer calls `beginRound` and `endRound`; ignored for a synchronous
    ///        appender
    BatchAppender(const std::string& name, bool synchronous, const Filters& filters, bool writesBatches);

    // Called by the consumer, from one thread at a time

    bool writesBatches() const noexcept { return writesBatches_; }

    /// Begins a round. Discards lines that a forked child has inherited: the parent writes them.
    void beginRound() noexcept;

    /// Sets the number of the message for the next call of `output`.
    void expect(std::uint64_t number) noexcept { number_ = number; }

    /// Writes the buffered lines and ends the round. Writes nothing in a forked child that did not begin it.
    void endRound() noexcept;

    /// \return the number of the oldest message whose line is buffered; 0 if none is
    std::uint64_t firstKept() const noexcept { return firstKept_.load(std::memory_order_relaxed); }

    /// \return whether lines have failed; check it after each message and at the end of the round
    bool hasFailed() const noexcept { return hasFailed_.load(std::memory_order_relaxed); }
    Failed takeFailed() noexcept;

    /// Writes the buffered lines and closes the file, so that another appender can open it. Call it when this
    /// appender is no longer used.
    void close();

    /// \return the name of the file that lines go to, without its folder, as several paths may lead there;
    ///         empty if unknown
    virtual std::string fileName() const { return std::string(); }

protected:
    /// \throw what `outputLine` throws, unless earlier failed lines must be reported first
    void doOutput(const LogMessage& message) final;

    /// Formats the line of a message and writes or buffers it.
    /// \throw LogException if that fails
    virtual void outputLine(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Writes buffered lines.
    /// \param written receives the number of bytes of `text` that are in the file
    /// \throw LogException if not everything was written
    virtual void writeLines(std::string_view text, std::size_t& written)
        ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Writes to a file, which may block for any time: a fork does not wait for it, and finds only the file
    /// changed.
    /// \return the number of bytes written
    std::size_t writeBlocking(Platform::OutputFile& file, std::string_view text)
        ZAV_LOG_REQUIRES(criticalSection_);

    /// Closes a file that is kept open between two lines.
    virtual void closeFile() ZAV_LOG_REQUIRES(criticalSection_) {}

    /// \return whether lines are to be buffered now
    bool keepsLines() const noexcept ZAV_LOG_REQUIRES(criticalSection_);

    /// Begins a line.
    /// \return the text to append the line to, including its end
    std::string& beginLine() ZAV_LOG_REQUIRES(criticalSection_);

    /// \return the line since `beginLine`; valid until something is written or appended
    std::string_view line() const noexcept ZAV_LOG_REQUIRES(criticalSection_) {
        return std::string_view(text_).substr(keptSize());
    }

    /// Buffers the line, and writes all buffered lines if they are large enough.
    void keepLine() ZAV_LOG_REQUIRES(criticalSection_);

    /// Writes all buffered lines, before their file changes. `hasFailed` tells whether that failed.
    void writeKept() noexcept ZAV_LOG_REQUIRES(criticalSection_);

    /// \return the number of buffered bytes
    std::size_t keptSize() const noexcept ZAV_LOG_REQUIRES(criticalSection_) {
        return lines_.empty() ? 0 : lines_.back().end;
    }

    mutable Platform::CriticalSection criticalSection_{Platform::AWAITED_BY_FORK}; ///< serialises messages

private:
    const bool writesBatches_;
    std::uint64_t number_ = 0; ///< of the message being output; used only by the consumer
    std::atomic<bool> hasFailed_{false};
    std::atomic<std::uint64_t> firstKept_{
        0}; ///< changed under the lock, read by the consumer for each message

    bool isInRound_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    unsigned roundGeneration_ ZAV_LOG_GUARDED_BY(criticalSection_) = 0; ///< detects a forked child
    std::string text_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< buffered lines, and the one being formatted
    std::vector<Line> lines_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< buffered, or failed if `hasFailed_`
    std::exception_ptr failure_ ZAV_LOG_GUARDED_BY(criticalSection_);
};

} // namespace Log
} // namespace ZAV
