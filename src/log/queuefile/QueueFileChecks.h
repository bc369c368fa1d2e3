#pragma once

#include "log/queuefile/QueueFileFormat.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace ZAV {
namespace Log {

// Checksums, by which a reader detects torn or damaged data.

namespace QueueFileFormat {

/// Mixes `word` in afterwards, as a seed for the hash would cost more.
inline std::uint64_t checkOf(std::uint64_t word, std::string_view payload) noexcept {
    return XXH3_64bits(payload.data(), payload.size()) ^ (word * 0x9E3779B97F4A7C15U);
}

inline std::uint64_t keyOf(std::string_view appenderName) noexcept {
    return XXH3_64bits(appenderName.data(), appenderName.size());
}

inline std::uint64_t checkOf(std::uint64_t block, std::uint64_t word, std::string_view payload) noexcept {
    return checkOf(block ^ word, payload);
}

inline std::uint64_t checkOf(const Mark& mark) noexcept {
    return checkOf(mark.word, {reinterpret_cast<const char*>(&mark.key), sizeof mark.key});
}

inline std::uint64_t checkOf(const Head& head) noexcept {
    return XXH3_64bits(&head, offsetof(Head, check));
}

/// Writes a record.
/// \param block first word of the block
/// \param place where to write it, aligned
/// \param isLast whether there is no room for another record after it
inline void writeFrame(std::uint64_t block, char* place, std::uint64_t word, std::string_view payload,
                       bool isLast) noexcept {
    auto* const frame = reinterpret_cast<Frame*>(place);
    if (!isLast) {
        reinterpret_cast<Frame*>(place + recordSize(payload.size()))->word = 0;
    }
    frame->check = checkOf(block, word, payload);
    publish(frame->word, word);
}

/// The same for a note, whose payload it copies into the record.
inline void writeNote(std::uint64_t block, char* place, std::uint32_t run, std::string_view payload,
                      bool isLast) noexcept {
    payload.copy(place + sizeof(Frame), payload.size());
    writeFrame(block, place, frameWord(run, payload.size(), true), payload, isLast);
}

} // namespace QueueFileFormat
} // namespace Log
} // namespace ZAV
