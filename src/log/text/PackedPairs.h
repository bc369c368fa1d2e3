#pragma once

#include "log/text/PackedValues.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ZAV {
namespace Log {

// Key-value pairs as bytes: each is two packed values, the first being the key's text. So a message stores
// them like the values of its text.

struct Pair {
    std::string_view key;
    TaggedValue value; ///< a text is always a `TEXT`
};

/// \return how many bytes a pair may take
inline std::size_t packedPairSize(std::string_view key, const TaggedValue& value) noexcept {
    return packedSize(key) + 1 + packedSize(value); // an empty key becomes one character
}

/// \param key bytes not allowed in a key are packed as `_`, and so is an empty key
/// \param place has room for the pair
/// \return the end of what was written
char* packPair(char* place, std::string_view key, const TaggedValue& value) noexcept;

/// Reads a packed pair and advances to the next one. Its key is a text, so its kind is not looked at.
inline Pair unpackPair(const char*& bytes) noexcept {
    const unsigned head = static_cast<unsigned char>(*bytes++);
    const std::string_view key = Packing::readText(bytes, head >> Packing::KIND_BITS);
    return {key, unpackValue(bytes)};
}

/// Calls a function for each of the pairs, in their order.
template <typename Function>
void forEachPair(std::string_view packed, const Function& function) {
    const char* next = packed.data();
    for (const char* const end = next + packed.size(); next != end;) {
        function(unpackPair(next));
    }
}

/// The same, but skips pairs hidden by a later one with the same key.
/// \throw std::bad_alloc if there are many
template <typename Function>
void forEachLastPair(std::string_view packed, const Function& function) {
    constexpr std::size_t FEW = 1024; // bytes, up to which comparing all with all is the fastest way
    if (packed.size() > FEW) {
        std::unordered_map<std::string_view, std::size_t> lastOf;
        std::size_t index = 0;
        forEachPair(packed, [&](const Pair& pair) { lastOf[pair.key] = index++; });
        index = 0;
        forEachPair(packed, [&](const Pair& pair) {
            if (lastOf[pair.key] == index++) {
                function(pair);
            }
        });
        return;
    }
    const char* next = packed.data();
    for (const char* const end = next + packed.size(); next != end;) {
        const Pair pair = unpackPair(next);
        bool isHidden = false;
        forEachPair({next, static_cast<std::size_t>(end - next)},
                    [&](const Pair& later) { isHidden = isHidden || later.key == pair.key; });
        if (!isHidden) {
            function(pair);
        }
    }
}

// Validation of untrusted bytes.

/// \return whether they are packed values
bool arePackedValues(std::string_view bytes) noexcept;

/// \return whether they are packed pairs
bool arePackedPairs(std::string_view bytes) noexcept;

/// Appends a pair as `key=value`, quoted if necessary.
/// \throw std::bad_alloc
void appendPair(std::string& text, const Pair& pair);

/// Appends the pairs after a message's text: a blank before each, except the first one if the text is empty.
/// \throw std::bad_alloc
void appendPairs(std::string& text, std::string_view packed, bool isTextEmpty);

/// \return keys and unquoted values of the pairs
/// \param hidesEarlier whether a pair is left out if a later one has the same key
/// \throw std::bad_alloc
std::vector<std::pair<std::string, std::string>> listPairs(std::string_view packed, bool hidesEarlier);

} // namespace Log
} // namespace ZAV
