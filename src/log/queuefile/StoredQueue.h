#pragma once

#include "log/LogMessage.h"
#include "log/message/MessageFields.h"
#include "log/queuefile/QueueFileFormat.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZAV {
namespace Log {

/// Parsed content of a queue file of any origin. Nothing in it is trusted: damaged parts are skipped, and
/// everything intact is found.
class StoredQueue {
public:
    /// A run of a program that has written to the file.
    struct Run {
        std::uint32_t id = 0;
        std::uint64_t begin = 0; ///< in microseconds since 1970; 0 if the file has no note on the run
        int processId = 0;
        std::string program;
        std::string host;

        std::uint64_t done = 0; ///< the marks, see `QueueFileFormat::QueueMark`
        std::uint64_t batchEnd = 0;
        std::uint64_t taken = 0;
        std::map<std::uint64_t, std::uint64_t> appenders; ///< their progress, by the hash of their names

        bool isWaiting(std::uint64_t number) const noexcept {
            return number > done && (number <= batchEnd || number > taken);
        }
    };

    struct Message {
        Run* run;
        std::uint64_t number;     ///< position in the run's order
        MessageFields fields;     ///< the texts are views into the `StoredQueue`
        bool isRecovered = false; ///< at least one appender has written it

        /// \return empty if there is no memory for it, for example because its format asks for a huge field
        ///         width
        std::optional<LogMessage> make() const noexcept;
    };

    /// A block in use.
    struct Block {
        std::uint32_t kind;
        std::size_t slot;
        std::size_t slots;
        std::uint32_t run = 0; ///< the run that wrote its records; 0 if it has none
    };

    /// \param bytes content of the file: a copy, which cannot change while it is parsed
    /// \throw std::bad_alloc
    explicit StoredQueue(std::string bytes);
    StoredQueue(const StoredQueue&) = delete;
    StoredQueue& operator=(const StoredQueue&) = delete;

    /// Number of bytes that identify a queue file.
    static constexpr std::size_t BEGINNING = sizeof QueueFileFormat::Head::magic;

    /// \return whether the bytes begin like a queue file
    static bool isOne(std::string_view bytes) noexcept;

    /// \return why the file cannot be written to; empty if it can
    const std::string& problem() const noexcept { return problem_; }

    /// \return the messages that wait for at least one appender, ordered by the start of their runs, then by
    ///         number
    std::vector<Message>& messages() noexcept { return messages_; }
    const std::vector<Message>& messages() const noexcept { return messages_; }

    const std::vector<Block>& blocks() const noexcept { return blocks_; }
    const std::map<std::uint32_t, Run>& runs() const noexcept { return runs_; }

private:
    /// A valid record.
    struct Record {
        std::uint32_t run;
        std::string_view payload;
    };
    using Key = std::pair<std::uint32_t, std::uint64_t>; ///< a run and an address in its process

    bool checkHead();
    void readBlocks();
    void readBlock(const Block& block, std::uint64_t word);
    void readRecords(std::size_t begin, std::size_t end, std::uint64_t block);
    void readMarks(std::size_t begin, std::size_t end);
    bool readRecord(std::size_t place, std::size_t end, std::uint64_t block, bool isBehindGap);
    Run& runOf(std::uint32_t id);
    void readNote(const Record& record);
    void readMessage(const Record& record);
    void readMessages();
    void damage() { problem_ = problem_.empty() ? "It is damaged" : problem_; }

    const std::string content_;
    const std::string_view bytes_; ///< view of `content_`
    std::string problem_;
    std::size_t scanned_ = 0; ///< bytes checked in vain while searching for records
    std::vector<Block> blocks_;
    std::vector<Record> records_; ///< of messages
    std::map<std::uint32_t, Run> runs_;
    std::map<Key, std::string> loggers_;
    std::map<Key, KnownPlace> places_;
    std::vector<Message> messages_;
};

} // namespace Log
} // namespace ZAV
