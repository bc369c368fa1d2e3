#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ZAV {
namespace Log {

/// On-disk format of a queue file.
///
/// After a head the file is divided into slots. A block is a contiguous range of slots: a header followed by
/// records or marks. Each record can be validated on its own and identifies the run of the program that wrote
/// it, so that a reader needs no state of the writer. All numbers are in native byte order, which the head
/// records.
namespace QueueFileFormat {

constexpr std::size_t SLOT = 4096;

/// The first slot of the file.
struct Head {
    char magic[8];
    std::uint32_t version;
    std::uint32_t byteOrder;
    std::uint32_t sizeOfAddress;
    std::uint32_t sizeOfSlot;
    std::uint64_t sizeOfFile;
    std::uint64_t check; ///< of all before it
};

constexpr char MAGIC[] = "ZAVQUEUE";
constexpr std::uint32_t VERSION = 2;
constexpr std::uint32_t BYTE_ORDER_MARK = 0x01020304;
constexpr std::uint32_t SWAPPED_BYTE_ORDER_MARK = 0x04030201; ///< of a machine with the other order

/// Header of a block: one word, written atomically. It is 0 in every slot outside of blocks.
struct BlockHead {
    std::uint64_t word; ///< see `blockWord`
    std::uint64_t copy; ///< copy of `word`, written before it
};

enum BlockKind : std::uint32_t {
    MESSAGES = 1,
    NOTES = 2, ///< description of the process
    MARKS = 3,
    FREED = 4 ///< its other slots may not be cleared yet
};

/// From the lowest bit: the number of slots in 24 bits, the kind in 4, the block's life number in 24, and a
/// hash of all three in the rest, to recognise a valid word. Memory is reused without clearing: the life
/// number, which goes into the check of each record, distinguishes a block's records from those of an earlier
/// block in the same place.
constexpr std::uint64_t blockWord(std::uint32_t kind, std::uint64_t slots, std::uint32_t life) {
    const std::uint64_t content = static_cast<std::uint64_t>(life & 0xFFFFFFU) << 28U |
                                  static_cast<std::uint64_t>(kind & 0xFU) << 24U | (slots & 0xFFFFFFU);
    return (content * 0x9E3779B97F4A7C15U & 0xFFF0000000000000U) | content;
}

constexpr std::size_t MAX_SLOTS = 0xFFFFFF;

constexpr std::uint32_t kindIn(std::uint64_t word) {
    return static_cast<std::uint32_t>(word >> 24U & 0xFU);
}
constexpr std::size_t slotsIn(std::uint64_t word) {
    return static_cast<std::size_t>(word & 0xFFFFFFU);
}
constexpr std::uint32_t lifeIn(std::uint64_t word) {
    return static_cast<std::uint32_t>(word >> 28U & 0xFFFFFFU);
}
constexpr bool isBlock(std::uint64_t word) {
    return slotsIn(word) != 0 && kindIn(word) >= MESSAGES && kindIn(word) <= FREED &&
           word == blockWord(kindIn(word), slotsIn(word), lifeIn(word));
}

/// Where the records or marks of a block begin.
constexpr std::size_t BODY = sizeof(BlockHead);

/// \return the number of slots of a block with a body of so many bytes
constexpr std::size_t slotsFor(std::size_t bytes) {
    return (bytes + BODY + SLOT - 1) / SLOT;
}

/// \return the bytes of a value that is stored unchanged in the file
template <typename Value>
inline std::string_view bytesOf(const Value& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// Header of a record, aligned. The payload, and a 0 in place of the next record's first word, are written
/// before the word that makes the record valid.
struct Frame {
    std::uint64_t word;  ///< the run in the upper half, the size of the payload in the lower one
    std::uint64_t check; ///< of `word`, the payload and the block's word
};

constexpr std::uint64_t NOTE_BIT = std::uint64_t{1} << 31U; ///< above the size of any payload

constexpr std::uint64_t frameWord(std::uint32_t run, std::size_t size, bool isNote = false) {
    return static_cast<std::uint64_t>(run) << 32U | static_cast<std::uint64_t>(size) |
           (isNote ? NOTE_BIT : 0);
}

constexpr std::uint32_t runIn(std::uint64_t word) {
    return static_cast<std::uint32_t>(word >> 32U);
}
constexpr std::size_t sizeIn(std::uint64_t word) {
    return static_cast<std::size_t>(word & (NOTE_BIT - 1));
}
constexpr bool isNote(std::uint64_t word) {
    return (word & NOTE_BIT) != 0;
}

constexpr std::size_t alignedUp(std::size_t size) {
    return (size + alignof(Frame) - 1) / alignof(Frame) * alignof(Frame);
}

/// \return the size of a record in bytes
constexpr std::size_t recordSize(std::size_t payload) {
    return sizeof(Frame) + alignedUp(payload);
}

/// Writes a word after everything written before (release).
inline void publish(std::uint64_t& word, std::uint64_t value) noexcept {
    static_assert(sizeof(std::atomic<std::uint64_t>) == sizeof word &&
                      std::atomic<std::uint64_t>::is_always_lock_free,
                  "the word in the file is the atomic number itself");
    reinterpret_cast<std::atomic<std::uint64_t>&>(word).store(value, std::memory_order_release);
}

// The payload of a note is one of these structs followed by its texts. Loggers and places are identified by
// their address in the process that wrote them.

enum NoteKind : std::uint32_t { RUN = 1, LOGGER = 2, PLACE = 3 };

struct RunNote {
    std::uint32_t kind;
    std::int32_t processId;
    std::uint64_t begin;         ///< in microseconds since 1970
    std::uint32_t programLength; ///< the host follows
    std::uint32_t unused;
};

struct LoggerNote {
    std::uint32_t kind;
    std::uint32_t unused;
    std::uint64_t address;
};

struct PlaceNote {
    std::uint32_t kind;
    std::int32_t line;
    std::uint64_t address;
    std::uint32_t level;
    std::uint32_t fileLength; ///< the format follows
};

/// A number that grows during the run. Stored twice, since a reader may come between the two writes.
struct Mark {
    std::uint64_t word; ///< `frameWord` of the run, with the kind instead of the size
    std::uint64_t key;
    std::uint64_t check; ///< of the two before it
    std::uint64_t number;
    std::uint64_t inverse; ///< ~number
};

enum MarkKind : std::uint32_t {
    QUEUE_MARK = 1,   ///< the key is a `QueueMark`
    APPENDER_MARK = 2 ///< the key is a hash of the appender's name; it has got all messages up to the number
};

/// A message waits unless its number is at or below `DONE`, or above `BATCH_END` and at or below `TAKEN`.
enum QueueMark : std::uint64_t {
    DONE = 1,      ///< all up to here were delivered or discarded
    BATCH_END = 2, ///< last message of the batch in delivery
    TAKEN = 3      ///< messages after `BATCH_END` up to here were discarded
};

} // namespace QueueFileFormat
} // namespace Log
} // namespace ZAV
