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

/// An appender to files that can write all lines of a round of the consumer at once.
///
/// Between `beginRound` and `endRound` it keeps lines and does not know yet what becomes of them; those that
/// did not reach the file are asked for with `takeFailed`. Outside of a round it writes each line by itself.
class BatchAppender : public Appender {
public:
    /// So large that hardly any round needs a second write.
    static constexpr std::size_t LARGEST_BATCH = std::size_t{1024} * 1024;

    /// A line that is kept.
    struct Line {
        std::uint64_t number; ///< that the queue has given its message
        std::size_t end;      ///< where it ends in the text of all that are kept; 0 once it has failed
    };

    /// Lines that are not in the file, oldest first.
    struct Failed {
        std::vector<Line> lines;
        std::exception_ptr reason; ///< as `doOutput` would have thrown it for each of them
    };

    /// \param writesBatches whether the consumer is to tell of its rounds; without effect on a synchronous one
    BatchAppender(const std::string& name, bool synchronous, const Filters& filters, bool writesBatches);

    // What the consumer calls, from one thread at a time

    bool writesBatches() const noexcept { return writesBatches_; }

    /// Begins a round. What the process was forked with is forgotten: it is the parent's to write.
    void beginRound() noexcept;

    /// Says which message the next call of `output` is for.
    void expect(std::uint64_t number) noexcept { number_ = number; }

    /// Writes the lines that are kept and ends the round. It does nothing in a forked child that did not
    /// begin it.
    void endRound() noexcept;

    /// \return the number of the oldest message whose line is kept; 0 if none is
    std::uint64_t firstKept() const noexcept { return firstKept_.load(std::memory_order_relaxed); }

    /// \return whether lines have failed; to be asked after each message and at the end of the round
    bool hasFailed() const noexcept { return hasFailed_.load(std::memory_order_relaxed); }
    Failed takeFailed() noexcept;

    /// Writes the lines that are kept and closes the file, so that another appender may have it. To be called
    /// once this one is not used any more.
    void close();

    /// \return the name of the file that lines go to, without its folder, which may be reached by several
    ///         paths; empty if that is not known
    virtual std::string fileName() const { return std::string(); }

protected:
    /// \throw what `outputLine` throws, unless that has to be reported behind earlier lines
    void doOutput(const LogMessage& message) final;

    /// Makes the line of a message and writes it, or has it kept.
    /// \throw LogException if that fails
    virtual void outputLine(const LogMessage& message) ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Writes lines that were kept.
    /// \param written receives how many bytes of the text are in the file
    /// \throw LogException if it is not the whole text
    virtual void writeLines(std::string_view text, std::size_t& written)
        ZAV_LOG_REQUIRES(criticalSection_) = 0;

    /// Writes to a file, which may take as long as it likes: no fork waits for it, and none finds more
    /// changed than the file.
    /// \return how many bytes the file has taken
    std::size_t writeUnchanged(Platform::OutputFile& file, std::string_view text)
        ZAV_LOG_REQUIRES(criticalSection_);

    /// Closes a file that is kept open between two lines.
    virtual void closeFile() ZAV_LOG_REQUIRES(criticalSection_) {}

    /// \return whether lines are kept now
    bool keepsLines() const noexcept ZAV_LOG_REQUIRES(criticalSection_);

    /// Begins a line.
    /// \return the text that the line, with its end, is to be appended to
    std::string& beginLine() ZAV_LOG_REQUIRES(criticalSection_);

    /// \return the line since `beginLine`, until something is written or appended
    std::string_view line() const noexcept ZAV_LOG_REQUIRES(criticalSection_) {
        return std::string_view(text_).substr(keptSize());
    }

    /// Keeps the line, and writes all if that is enough.
    void keepLine() ZAV_LOG_REQUIRES(criticalSection_);

    /// Writes all lines that are kept, before their file changes. Whether that fails shows in `hasFailed`.
    void writeKept() noexcept ZAV_LOG_REQUIRES(criticalSection_);

    /// \return how many bytes are kept
    std::size_t keptSize() const noexcept ZAV_LOG_REQUIRES(criticalSection_) {
        return lines_.empty() ? 0 : lines_.back().end;
    }

    mutable Platform::CriticalSection criticalSection_{Platform::AWAITED_BY_FORK}; ///< one message at a time

private:
    const bool writesBatches_;
    std::uint64_t number_ = 0; ///< of the message that is output; used by the consumer alone
    std::atomic<bool> hasFailed_{false};
    std::atomic<std::uint64_t> firstKept_{
        0}; ///< changed under the lock, read by the consumer for each message

    bool isInRound_ ZAV_LOG_GUARDED_BY(criticalSection_) = false;
    unsigned roundGeneration_ ZAV_LOG_GUARDED_BY(criticalSection_) = 0; ///< tells a forked child
    std::string text_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< lines that are kept, and the one being made
    std::vector<Line> lines_ ZAV_LOG_GUARDED_BY(criticalSection_); ///< kept, or failed if `hasFailed_`
    std::exception_ptr failure_ ZAV_LOG_GUARDED_BY(criticalSection_);
};

} // namespace Log
} // namespace ZAV
