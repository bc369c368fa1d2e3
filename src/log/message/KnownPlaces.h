#pragma once

#include "log/TaggedValue.h"

namespace ZAV {
namespace Log {

/// The library's own copy of a place, which is never freed: the program may have unloaded the code that the
/// place lies in before its messages are delivered. There is one for each place, so that its address stands
/// for all that messages from there have in common.
struct KnownPlace : Place {
    explicit KnownPlace(const Place& place) : Place(place) {}

    /// Whether the text has to be made in the call, since it takes more than values that were copied.
    bool needsCall = false;
    KnownPlace* next = nullptr; ///< used to look it up
};

/// \return the copy of a place, made when it is asked for the first time. The places of a program are few,
///         and a plugin that is loaded again has the same ones. It takes no lock.
/// \throw std::bad_alloc
const KnownPlace& knownPlace(const Place& place);

} // namespace Log
} // namespace ZAV
