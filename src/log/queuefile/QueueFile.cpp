#include "log/queuefile/QueueFile.h"

#include "log/LogException.h"
#include "log/async/PackedMessage.h"
#include "log/layout/LineLayout.h"
#include "log/queuefile/QueueFileChecks.h"
#include "log/queuefile/StoredQueue.h"
#include "platform/Process.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <utility>

namespace ZAV {
namespace Log {

using namespace QueueFileFormat;
using Platform::ScopedLock;

namespace {

constexpr std::size_t LEAST_SLOTS = QueueFile::LEAST_SIZE / SLOT;

/// How much is populated before the first message. Touching a page for the first time costs a logging call
/// more than everything else that it does; only a queue that has grown that far uses the rest.
constexpr std::size_t MAPPED_AT_ONCE = std::size_t{64} << 20U;

/// \return the size clamped and rounded down to whole slots, in bytes
std::size_t slotSize(std::uint64_t size) {
    return static_cast<std::size_t>(std::clamp(size, QueueFile::LEAST_SIZE, QueueFile::MAX_SIZE)) / SLOT *
           SLOT;
}

/// \return the number of slots reserved for threads that find no other room; as many again are reserved for
///         the next process
std::size_t reservedSlots(std::size_t slots) {
    return std::max(slots / 64, LEAST_SLOTS / 4);
}

Head makeHead(std::size_t size) {
    Head head = {};
    std::memcpy(head.magic, MAGIC, sizeof head.magic);
    head.version = VERSION;
    head.byteOrder = BYTE_ORDER_MARK;
    head.sizeOfAddress = sizeof(void*);
    head.sizeOfSlot = SLOT;
    head.sizeOfFile = size;
    head.check = checkOf(head);
    return head;
}

/// Returns a number that distinguishes this run from others that may have left records in the file, even in
/// free slots.
std::uint32_t makeRun() {
    const std::uint64_t seeds[] = {
        Util::TimeUtils::Time::now().microseconds(),
        static_cast<std::uint64_t>(Platform::rememberedProcessId()),
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count())};
    const auto run = static_cast<std::uint32_t>(XXH3_64bits(seeds, sizeof seeds));
    return run == 0 ? 1 : run;
}

} // namespace

QueueFile::QueueFile(const std::string& path, std::uint64_t size, Damage damage)
    : run_(makeRun()), generation_(Platform::forkGeneration()), life_(run_) {
    const std::size_t wholeSize = size == 0 ? 0 : slotSize(size);
    const Head head = makeHead(wholeSize);
    std::string problem;
    const Platform::MappedFile::Result result = file_.open(path, wholeSize, bytesOf(head), problem);
    if (result == Platform::MappedFile::IN_USE) {
        throw LogException("The queue file " + path + " is in use.");
    }
    const bool mayBeDamaged =
        result == Platform::MappedFile::MAPPED && file_.size() != 0 && readEarlier(problem);
    const bool isWhole = problem.empty() && earlier_ != nullptr;
    if (isWhole && file_.makePrivate(problem) && earlier_->messages().empty() && wholeSize != 0 &&
        wholeSize != file_.size() && file_.replace(path, wholeSize, bytesOf(head), problem)) {
        earlier_.reset(); // the new file contains nothing of it
    }
    if (!problem.empty() && (!mayBeDamaged || damage == REFUSE_DAMAGED)) {
        throw LogException("The queue file " + path + " cannot be read: " + problem);
    }
    if (problem.empty() && file_.size() != 0) {
        begin();
    }
}

/// \param problem receives the reason if the file cannot be written to
/// \return whether it is a queue file, damaged or not
bool QueueFile::readEarlier(std::string& problem) {
    std::string content;
    if (file_.size() > MAX_SIZE) {
        problem = "It is larger than any";
        return false;
    }
    if (!file_.read(content, problem)) {
        return false;
    }
    const bool isOne = StoredQueue::isOne(content);
    earlier_ = std::make_unique<StoredQueue>(std::move(content));
    problem = earlier_->problem();
    return isOne;
}

QueueFile::~QueueFile() = default;

/// Assumes that each block has one slot. Besides message blocks there are the head, two blocks of notes and
/// one of marks.
std::uint64_t QueueFile::capacity(std::uint64_t size, std::size_t textSize) {
    constexpr std::size_t OTHERS = 4;
    const std::size_t slots = slotSize(size) / SLOT;
    const std::string text(textSize, ' ');
    MessageFields message("net", Util::TimeUtils::Time::now(), Level::LEVEL_INFO, text, 1, "app.cpp", LOG);
    message.thread = 1;
    const PackedMessage packed(message, 0, SharedFields(), 1);
    std::string bytes(packed.mostBytes(), ' ');
    SharedFields before;
    const char* const end = packed.writeTo(bytes.data(), 1, before);
    const std::size_t record = recordSize(static_cast<std::size_t>(end - bytes.data()));
    const std::size_t available = slots - 2 * reservedSlots(slots) - OTHERS;
    return available * (SLOT - BODY) / record;
}

void QueueFile::begin() {
    const ScopedLock lock(lock_);
    slots_ = Slots(file_.size() / SLOT);
    file_.populate(MAPPED_AT_ONCE);
    const Util::TimeUtils::Time now = Util::TimeUtils::Time::now();
    const ProcessDescription process = describeProcess(now);
    RunNote run = {};
    run.kind = RUN;
    run.processId = process.id;
    run.begin = now.microseconds();
    run.programLength = static_cast<std::uint32_t>(process.program.size());
    runNote_.assign(bytesOf(run)).append(process.program).append(process.host);
    if (earlier_ != nullptr) {
        keepEarlier();
    }
}

bool QueueFile::isOfThisProcess() const noexcept {
    return generation_ == Platform::forkGeneration();
}

// Slots

std::size_t QueueFile::slotOf(const Memory& memory) const noexcept {
    return static_cast<std::size_t>(memory.bytes - file_.bytes()) / SLOT;
}

/// \param kept number of slots that must stay free
QueueFile::Memory QueueFile::takeSlots(BlockKind kind, std::size_t slots, std::size_t kept) noexcept {
    const std::size_t slot = isOfThisProcess() ? slots_.take(slots, kept) : 0;
    if (slot == 0) {
        return {nullptr, 0, 0};
    }
    const std::size_t half = slots_.count() / 2;
    if (slots_.used() >= half && slots_.used() - slots < half) {
        isFilling_ = true;
    }
    char* const block = file_.bytes() + slot * SLOT;
    reinterpret_cast<Frame*>(block + BODY)->word = 0;
    auto* const head = reinterpret_cast<BlockHead*>(block);
    const std::uint64_t word = blockWord(kind, slots, ++life_);
    publish(head->copy, word);
    publish(head->word, word);
    return {block + BODY, slots * SLOT - BODY, word};
}

void QueueFile::freeSlots(std::size_t slot, std::size_t slots) noexcept {
    const auto wordOf = [this](std::size_t any) -> std::uint64_t& {
        return reinterpret_cast<BlockHead*>(file_.bytes() + any * SLOT)->word;
    };
    publish(wordOf(slot), blockWord(FREED, slots, 0)); // so that readers ignore slots not yet cleared
    for (std::size_t freed = slot + slots; freed-- > slot;) {
        publish(wordOf(freed), 0);
    }
    slots_.free(slot, slots);
}

/// As each thread keeps its last block, empty blocks could fill the file; once room is scarce, threads get
/// small blocks. All of them leave a reserve for the notes on this process and the marks of the next one, and
/// as much again for threads that find no other room.
QueueFile::Memory QueueFile::take(std::size_t wanted, std::size_t least, Room room) noexcept {
    const ScopedLock lock(lock_);
    const std::size_t reserved = reservedSlots(slots_.count());
    const std::size_t kept = room == ALSO_RESERVED ? reserved : 2 * reserved;
    const bool isScarce = slots_.used() + slotsFor(wanted) > slots_.count() / 2;
    Memory memory = takeSlots(MESSAGES, slotsFor(isScarce ? least : wanted), kept);
    if (memory.bytes == nullptr && !isScarce) {
        memory = takeSlots(MESSAGES, slotsFor(least), kept);
    }
    if (isScarce && room == ALSO_RESERVED) {
        isFilling_ = true;
    }
    return memory;
}

/// Besides the block there are the file's head, the two notes on the process, and its marks.
bool QueueFile::fits(std::size_t size) const noexcept {
    constexpr std::size_t OTHERS = 4;
    const ScopedLock lock(lock_);
    return size < NOTE_BIT && slotsFor(size) + reservedSlots(slots_.count()) + OTHERS < slots_.count();
}

void QueueFile::giveBack(const Memory& memory) noexcept {
    if (!isOfThisProcess()) {
        return;
    }
    const ScopedLock lock(lock_);
    freeSlots(slotOf(memory), (memory.size + BODY) / SLOT);
}

Slots::Slots(std::size_t count) : isUsed_(count) {
    if (count != 0) {
        isUsed_[0] = true;
    }
}

std::size_t Slots::take(std::size_t slots, std::size_t kept) noexcept {
    const std::size_t first = used_ + slots + kept < count() ? find(slots) : 0;
    if (first != 0) {
        use(first, slots);
    }
    return first;
}

void Slots::use(std::size_t first, std::size_t slots) noexcept {
    std::fill_n(isUsed_.begin() + static_cast<std::ptrdiff_t>(first), slots, true);
    used_ += slots;
    while (firstFree_ < count() && isUsed_[firstFree_]) {
        ++firstFree_;
    }
}

void Slots::free(std::size_t first, std::size_t slots) noexcept {
    std::fill_n(isUsed_.begin() + static_cast<std::ptrdiff_t>(first), slots, false);
    used_ -= slots;
    firstFree_ = std::min(firstFree_, first);
}

/// \return 0 if there is no such range of free slots
std::size_t Slots::find(std::size_t slots) const noexcept {
    std::size_t length = 0;
    for (std::size_t slot = firstFree_; slot < count(); ++slot) {
        length = isUsed_[slot] ? 0 : length + 1;
        if (length == slots) {
            return slot + 1 - slots;
        }
    }
    return 0;
}

// The process's files

/// Reuses a file that is already open: opening it again would lose this process's lock on it. If the file was
/// removed or replaced meanwhile, the path leads to a different one, which is opened.
QueueFile* QueueFiles::open(const Util::Properties& properties) {
    settings_.read(properties);
    if (settings_.path.empty()) {
        return nullptr;
    }
    const auto known =
        std::find_if(files_.begin(), files_.end(),
                     [this](const std::unique_ptr<QueueFile>& file) { return file->isAt(settings_.path); });
    if (known != files_.end()) {
        return known->get();
    }
    files_.push_back(std::make_unique<QueueFile>(settings_.path, settings_.size));
    return files_.back().get();
}

/// The key may hold a path relative to the working directory at the start, so equal names count as the same
/// file.
void QueueFiles::refuseChange(const Util::Properties& properties) const {
    const QueueFileSettings settings = settings_.renewedBy(properties);
    const bool isSameFile = settings.name == settings_.name || settings.path == settings_.path;
    const bool isSameSize = settings.name.empty() || settings.size == settings_.size;
    if (!isSameFile || !isSameSize) {
        throw LogException("The queue file cannot be changed by a reload.");
    }
}

void QueueFiles::forgetInChild() noexcept {
    for (std::unique_ptr<QueueFile>& file : files_) {
        file->closeInChild();
        static_cast<void>(file.release()); // blocks refer to its memory
    }
    files_.clear();
}

} // namespace Log
} // namespace ZAV
