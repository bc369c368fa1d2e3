#pragma once

/// \file
/// Implementation of the macros of `log/LogValues.h`; not used directly.

#include "log/Level.h"
#include "log/PairValue.h"
#include "zav-util/Export.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

namespace ZAV {
namespace Log {

class Logger;

/// Used by the macros of `log/LogValues.h`, not directly.
///
/// Logs a text with pairs. For each list of types, one function tags the arguments of the calls.
class MessageWithValues {
public:
    /// \param keysAndValues each key followed by its value
    /// \throw std::bad_alloc and what the logger's function for the level throws
    template <typename... KeysAndValues>
    [[gnu::noinline]] static void log(const Logger& logger, Level::LogLevel level, int line, const char* file,
                                      TextArgument text, const KeysAndValues&... keysAndValues) {
        constexpr bool isWhole = sizeof...(KeysAndValues) % 2 == 0;
        static_assert(isWhole, "a ZAV_LOGV_ call has a key without a value");
        static_assert(!isWhole || areKeys<KeysAndValues...>(), "a key of a ZAV_LOGV_ call must be a text");
        if constexpr (isWhole && areKeys<KeysAndValues...>()) {
            // In one expression: temporaries that hold the texts of values are destroyed at its end.
            logTagged(
                logger, {file, {}, line, level}, text,
                Tagged<sizeof...(KeysAndValues) + 1>{{pairValue(keysAndValues)..., TaggedValue()}}.values,
                sizeof...(KeysAndValues) / 2);
        }
    }

    /// \param keysAndValues `count` pairs
    ZAV_LOG_API static void logTagged(const Logger& logger, const Place& place, std::string_view text,
                                      const TaggedValue* keysAndValues, std::size_t count);

private:
    template <std::size_t COUNT>
    struct Tagged {
        TaggedValue values[COUNT];
    };

    template <typename... KeysAndValues>
    static constexpr bool areKeys() {
        constexpr bool areTexts[] = {std::is_convertible_v<const KeysAndValues&, std::string_view>..., true};
        for (std::size_t i = 0; i < sizeof...(KeysAndValues); i += 2) {
            if (!areTexts[i]) {
                return false;
            }
        }
        return true;
    }
};

} // namespace Log
} // namespace ZAV
