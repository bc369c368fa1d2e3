#include "log/async/Ring.h"

#include "log/queuefile/QueueFileChecks.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <type_traits>

namespace ZAV {
namespace Log {

// The memory of the blocks

BlockPool::~BlockPool() {
    for (const auto& place : kept_) {
        ::operator delete(place.load(std::memory_order_acquire));
    }
}

namespace {

/// \throw std::bad_alloc
MessageBlock* makeBlock(std::size_t capacity) {
    auto* const block = new (::operator new(sizeof(MessageBlock) + capacity)) MessageBlock;
    block->bytes = reinterpret_cast<char*>(block + 1);
    block->capacity = capacity;
    return block;
}

} // namespace

void BlockPool::fill() noexcept {
    const auto isEmpty = [](const std::atomic<MessageBlock*>& place) {
        return place.load(std::memory_order_relaxed) == nullptr;
    };
    auto missing = static_cast<std::size_t>(std::count_if(std::begin(kept_), std::end(kept_), isEmpty));
    if (missing <= std::size(kept_) / 2) {
        return;
    }
    try {
        for (; missing > 0; --missing) {
            MessageBlock* const block = makeBlock(USUAL_CAPACITY);
            std::memset(block->bytes, 0, block->capacity);
            giveBack(block);
        }
    } catch (const std::bad_alloc&) {
        return; // blocks are allocated on demand
    }
}

MessageBlock* BlockPool::take(std::size_t capacity) {
    for (auto& place : kept_) {
        MessageBlock* const kept =
            capacity == USUAL_CAPACITY ? place.exchange(nullptr, std::memory_order_acquire) : nullptr;
        if (kept != nullptr) {
            kept->next.store(nullptr, std::memory_order_relaxed);
            kept->published.store(0, std::memory_order_relaxed);
            return kept;
        }
    }
    return makeBlock(capacity);
}

MessageBlock* BlockPool::takeStored(QueueFile& file, std::size_t wanted, std::size_t least,
                                    QueueFile::Room room) {
    MessageBlock* const block = makeBlock(0);
    const QueueFile::Memory memory = file.take(wanted, least, room);
    if (memory.bytes == nullptr) {
        ::operator delete(block);
        return nullptr;
    }
    block->bytes = memory.bytes;
    block->capacity = memory.size;
    block->word = memory.word;
    block->file = &file;
    return block;
}

void BlockPool::giveBack(MessageBlock* block) noexcept {
    if (block->file != nullptr) {
        block->file->giveBack({block->bytes, block->capacity, block->word});
    }
    for (auto& place : kept_) {
        MessageBlock* empty = nullptr;
        if (block->capacity == USUAL_CAPACITY && block->file == nullptr &&
            place.compare_exchange_strong(empty, block, std::memory_order_release,
                                          std::memory_order_relaxed)) {
            return;
        }
    }
    ::operator delete(block);
}

// The messages of a thread

namespace {

/// Blocks grow: a thread that seldom logs costs little, and one that logs much seldom needs a new block.
constexpr std::size_t FIRST_CAPACITY = 1024;
constexpr std::size_t GROWTH = 8;

} // namespace

/// The first block has no capacity: only the first message determines whether it is kept in memory or in a
/// file.
Ring::Ring(BlockPool& pool, QueueFile::Room room)
    : pool_(pool), room_(room), nextCapacity_(FIRST_CAPACITY), lastBlock_(pool.take(0)) {
    oldest_ = lastBlock_.load(std::memory_order_relaxed);
    front_ = Cursor(oldest_);
}

Ring::~Ring() {
    for (MessageBlock* block = oldest_; block != nullptr;) {
        MessageBlock* const next = block->next.load(std::memory_order_relaxed);
        pool_.giveBack(block);
        block = next;
    }
}

// Called by the appending thread

std::optional<PackedMessage> Ring::reserve(const MessageFields& message, int answeredReports,
                                           std::uint64_t nextNumber, QueueFile* file) {
    return file == nullptr ? reserveInMemory(message, answeredReports, nextNumber)
                           : reserveStored(message, answeredReports, nextNumber, *file);
}

std::optional<PackedMessage> Ring::reserveInMemory(const MessageFields& message, int answeredReports,
                                                   std::uint64_t nextNumber) {
    std::optional<PackedMessage> packed(std::in_place, message, answeredReports, last_, nextNumber);
    const MessageBlock& last = *lastBlock_.load(std::memory_order_relaxed);
    if (last.file != nullptr || last.capacity - used_ < packed->mostBytes()) {
        // The first message of a block shares nothing with the one before, since blocks are freed one at a
        // time.
        packed.emplace(message, answeredReports, none_, nextNumber);
        addBlock(packed->mostBytes(), nullptr);
    }
    return packed;
}

namespace {

/// The notes of a block on a logger and a place.
struct Notes {
    explicit Notes(const MessageFields& message)
        : logger(loggerNote(message)), place(message.place == nullptr ? "" : placeNote(*message.place)) {}

    /// Each note is written twice, so that damage to one copy loses nothing.
    std::size_t size() const noexcept {
        return 2 * (QueueFileFormat::recordSize(logger.size()) + QueueFileFormat::recordSize(place.size()));
    }

    const std::string logger;
    const std::string place; ///< may be empty
};

/// \return the table's entry for an address
template <typename Table>
const void*& placeIn(Table& table, const void* address) {
    constexpr unsigned UNUSED_BITS = 64 - 5;
    static_assert(std::extent_v<Table> == 1U << (64 - UNUSED_BITS));
    return table[reinterpret_cast<std::uintptr_t>(address) * 0x9E3779B97F4A7C15U >> UNUSED_BITS];
}

} // namespace

std::size_t Ring::storedSize(const MessageFields& message) {
    constexpr auto LARGEST_NUMBER = std::numeric_limits<std::uint64_t>::max();
    return Notes(message).size() +
           QueueFileFormat::recordSize(PackedMessage(message, 0, SharedFields(), LARGEST_NUMBER).mostBytes());
}

/// In a file each message can be read on its own, with its block's notes on the logger and the place.
std::optional<PackedMessage> Ring::reserveStored(const MessageFields& message, int answeredReports,
                                                 std::uint64_t nextNumber, QueueFile& file) {
    const PackedMessage packed(message, answeredReports, none_, nextNumber);
    const std::size_t size = QueueFileFormat::recordSize(packed.mostBytes());
    if (packed.mostBytes() >= QueueFileFormat::NOTE_BIT || !file.describeRun()) {
        return std::nullopt;
    }
    if (!hasRoom(size, file) || !isLoggerNoted(message) || !isPlaceNoted(message)) {
        const Notes notes(message); // allocates, which may run application code that logs
        if (!hasRoom(notes.size() + size, file) && !addBlock(notes.size() + size, &file)) {
            return std::nullopt;
        }
        if (!isLoggerNoted(message)) {
            note(notes.logger);
            placeIn(notedLoggers_, message.loggerName.data()) = message.loggerName.data();
        }
        if (!isPlaceNoted(message)) {
            note(notes.place);
            placeIn(notedPlaces_, message.place) = message.place;
        }
    }
    return packed;
}

/// \return whether the last block is in the file and has room for so many bytes
bool Ring::hasRoom(std::size_t bytes, const QueueFile& file) const noexcept {
    const MessageBlock& last = *lastBlock_.load(std::memory_order_relaxed);
    return last.file == &file && last.capacity - used_ >= bytes;
}

// Whether the last block is known to have the note for the message's logger or place:

bool Ring::isLoggerNoted(const MessageFields& message) noexcept {
    return placeIn(notedLoggers_, message.loggerName.data()) == message.loggerName.data();
}

bool Ring::isPlaceNoted(const MessageFields& message) noexcept {
    return message.place == nullptr || placeIn(notedPlaces_, message.place) == message.place;
}

/// \param payload if empty, nothing is written
void Ring::note(const std::string& payload) noexcept {
    const MessageBlock& block = *lastBlock_.load(std::memory_order_relaxed);
    for (int copy = 0; copy < 2 && !payload.empty(); ++copy) {
        char* const record = block.bytes + used_;
        used_ += QueueFileFormat::recordSize(payload.size());
        QueueFileFormat::writeNote(block.word, record, block.file->run(), payload,
                                   false); // a message follows
    }
}

/// The block is linked before the message gets its number: a reader that has seen the number sees the block.
/// \param file null for memory
/// \return false if the file is full
bool Ring::addBlock(std::size_t neededBytes, QueueFile* file) {
    const std::size_t wanted = std::max(neededBytes, nextCapacity_);
    MessageBlock* const block =
        file == nullptr ? pool_.take(wanted) : BlockPool::takeStored(*file, wanted, neededBytes, room_);
    if (block == nullptr) {
        return false;
    }
    nextCapacity_ = std::min(nextCapacity_ * GROWTH, BlockPool::USUAL_CAPACITY);
    link(block);
    return true;
}

void Ring::link(MessageBlock* block) noexcept {
    MessageBlock* const filled = lastBlock_.load(std::memory_order_relaxed);
    lastBlock_.store(block, std::memory_order_release);
    filled->next.store(block,
                       std::memory_order_release); // a reader that follows it sees the new `lastBlock_`
    used_ = 0;
    last_ = SharedFields();
    if (block->file != nullptr) {
        std::fill(std::begin(notedLoggers_), std::end(notedLoggers_), nullptr);
        std::fill(std::begin(notedPlaces_), std::end(notedPlaces_), nullptr);
    }
}

void Ring::append(const PackedMessage& message, std::uint64_t number) noexcept {
    MessageBlock& block = *lastBlock_.load(std::memory_order_relaxed);
    char* const place = block.bytes + used_;
    if (block.file == nullptr) {
        used_ += static_cast<std::size_t>(message.writeTo(place, number, last_) - place);
    } else {
        last_.number = 0; // as it was when the message was packed
        char* const payload = place + sizeof(QueueFileFormat::Frame);
        const auto size = static_cast<std::size_t>(message.writeTo(payload, number, last_) - payload);
        used_ += QueueFileFormat::recordSize(size);
        QueueFileFormat::writeFrame(block.word, place, QueueFileFormat::frameWord(block.file->run(), size),
                                    {payload, size}, block.capacity - used_ < sizeof(QueueFileFormat::Frame));
    }
    block.published.store(used_, std::memory_order_release);
}

} // namespace Log
} // namespace ZAV
