#include "log/message/MessageFields.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <new>

namespace ZAV {
namespace Log {

namespace {

/// Places by a hash of their contents. They are added at the front of a chain and never removed, so that no
/// lock is needed; if two threads add the same one, one of the two finds the other's.
std::atomic<KnownPlace*> chains[1024];

/// A cache of the places from which the thread has logged recently.
thread_local const KnownPlace* recent[16];

/// The level is compared last. Next to the line, both would be compared with a single load, which stalls
/// until the call's two stores have left the store buffer.
bool isSame(const Place& place, const Place& other) {
    return place.line == other.line && equalTexts(place.format, other.format) &&
           equalTexts(place.file, other.file) && place.level == other.level;
}

std::size_t hash(const Place& place) {
    return std::hash<std::string_view>()(place.format) + 31 * std::hash<std::string_view>()(place.file) +
           static_cast<unsigned>(place.line);
}

/// \param end where the search ends; null for the end of the chain
KnownPlace* findBefore(const KnownPlace* end, KnownPlace* known, const Place& place) {
    while (known != end && !isSame(*known, place)) {
        known = known->next;
    }
    return known == end ? nullptr : known;
}

std::string_view copyTo(char* characters, std::string_view text) {
    return {characters, text.copy(characters, text.size())};
}

/// \return whether a field of the format needs more than copied values: the address of a text ("p"), the
///         current global locale ("L"), or a width or precision that is a value and may be out of range. A
///         fill character may be mistaken for one of these, which is harmless.
bool mustFormatInCall(std::string_view format) {
    int depth = 0;
    bool isForm = false;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char character = format[i];
        if (character == '{' && depth == 0 && format.substr(i, 2) == "{{") {
            ++i;
        } else if (character == '{') {
            isForm = false;
            if (++depth > 1) {
                return true;
            }
        } else if (character == '}' && depth > 0) {
            --depth;
        } else if (depth > 0 && character == ':') {
            isForm = true;
        } else if (depth > 0 && isForm && (character == 'p' || character == 'L')) {
            return true;
        }
    }
    return false;
}

struct Deleter {
    void operator()(KnownPlace* place) const { ::operator delete(place); }
};

/// The texts follow the object in the same allocation.
std::unique_ptr<KnownPlace, Deleter> makeCopy(const Place& place) {
    void* const memory = ::operator new(sizeof(KnownPlace) + place.file.size() + place.format.size());
    std::unique_ptr<KnownPlace, Deleter> copy(new (memory) KnownPlace(place));
    char* const texts = reinterpret_cast<char*>(copy.get() + 1);
    copy->file = copyTo(texts, place.file);
    copy->format = copyTo(texts + place.file.size(), place.format);
    copy->mustFormatInCall = mustFormatInCall(place.format);
    return copy;
}

const KnownPlace& find(const Place& place) {
    std::atomic<KnownPlace*>& chain = chains[hash(place) % std::size(chains)];
    KnownPlace* first = chain.load(std::memory_order_acquire);
    if (const KnownPlace* const known = findBefore(nullptr, first, place)) {
        return *known;
    }
    auto made = makeCopy(place);
    made->next = first;
    while (!chain.compare_exchange_weak(first, made.get(), std::memory_order_release,
                                        std::memory_order_acquire)) {
        if (const KnownPlace* const known = findBefore(made->next, first, place)) {
            return *known;
        }
        made->next = first;
    }
    return *made.release();
}

} // namespace

/// Recent places are looked up by the addresses of the call's texts. Their contents are compared
/// nevertheless: other code may have been loaded at these addresses.
const KnownPlace& knownPlace(const Place& place) {
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(place.format.data()) ^
                                   reinterpret_cast<std::uintptr_t>(place.file.data()) ^
                                   static_cast<unsigned>(place.line);
    const KnownPlace*& known = recent[(address ^ address >> 4U) % std::size(recent)];
    if (known == nullptr || !isSame(*known, place)) {
        known = &find(place);
    }
    return *known;
}

} // namespace Log
} // namespace ZAV
