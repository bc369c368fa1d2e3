#pragma once

/// \file
/// Implementation of the macros of `log/LogFormat.h`; not used directly.

#include "log/Level.h"
#include "log/TaggedValue.h"
#include "zav-util/Export.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>
#include <string_view>
#include <type_traits>

#if __has_include(<fmt/format.h>)
#include <fmt/format.h>
#define ZAV_LOGF_CHECKED(format) FMT_STRING(format)
#else
#if __has_include(<format>)
#include <format>
#endif
#if !defined(__cpp_lib_format)
#error "log/LogFormat.h needs the headers of {fmt} (libfmt-dev), or std::format"
#endif
#include <iterator>
#include <string>
#define ZAV_LOGF_CHECKED(format) format
#endif

/// Whether the format is a compile-time constant; only then can the compiler check it.
#if defined(__GNUC__)
#define ZAV_LOGF_IS_KNOWN(format) __builtin_constant_p(::ZAV::Log::FormatText::firstOf(format))
#else
#define ZAV_LOGF_IS_KNOWN(format) true
#endif

namespace ZAV {
namespace Log {

class Logger;

/// Used by the macros of `log/LogFormat.h`, not directly.
///
/// A view of a format: of all characters of a literal, or of anything that converts to `std::string_view`.
struct FormatText {
    template <std::size_t SIZE>
    constexpr FormatText(const char (&literal)[SIZE])
        : data(literal), size(SIZE - (literal[SIZE - 1] == '\0' ? 1 : 0)) {}
    template <typename Text, std::enable_if_t<!std::is_array_v<Text>, int> = 0>
    constexpr FormatText(const Text& text) : FormatText(std::string_view(text)) {}
    constexpr FormatText(std::string_view text) : data(text.data()), size(text.size()) {}

    static constexpr char firstOf(std::string_view format) { return format.empty() ? '\0' : format[0]; }
    static char firstOf(...);

    const char* data;
    std::size_t size;
};

/// Used by the macros of `log/LogFormat.h`, not directly.
///
/// \return the greatest number of values that a format can use: by the positions in it, or by the number of
///         its fields, nested ones included. A format that names its values otherwise has no such limit.
constexpr std::size_t mostValues(std::string_view format) {
    std::size_t fields = 0;
    std::size_t positions = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '{' || ++i == format.size() || format[i] == '{') {
            continue;
        }
        if (format[i] == '}' || format[i] == ':') {
            ++fields;
            --i; // a brace may follow
            continue;
        }
        if (format[i] < '0' || format[i] > '9') {
            return std::string_view::npos;
        }
        std::size_t position = 0;
        for (; i < format.size() && format[i] >= '0' && format[i] <= '9'; ++i) {
            position = 10 * position + static_cast<std::size_t>(format[i] - '0');
        }
        positions = position >= positions ? position + 1 : positions;
        --i;
    }
    return fields > positions ? fields : positions;
}

/// Used by the macros of `log/LogFormat.h`, not directly.
///
/// Logs messages that are made from a format and values. A macro call adds only the passing of its arguments
/// to its caller's code: for each list of common types, one function tags the values, and the library formats
/// them. Calls with values of other types are formatted here, in the caller's program.
///
/// There are no objects of static storage duration, not even in the caller's functions: with g++ one would
/// keep a plugin from being unloaded.
class FormattedMessage {
    template <typename Type>
    struct Itself {
        using type = Type;
    };

#if __has_include(<fmt/format.h>)
    /// Constructed from a format. It compiles only if the format suits values of these types.
    template <typename... Values>
    struct Checked {
        template <typename Format>
        constexpr Checked(Format) {
            constexpr fmt::string_view format = fmt::string_view(Format());
            static_assert(mostValues({format.data(), format.size()}) >= sizeof...(Values),
                          "a ZAV_LOGF_ call has more values than its format has fields");
            static_cast<void>(fmt::format_string<Values...>(Format()));
        }
    };
#else
    template <typename... Values>
    using Checked = std::format_string<Values...>;
#endif

public:
    /// The numbers of a place packed into one, so that a call passes them with one instruction: the length of
    /// the file name, the line and the level, in 24, 32 and 8 bits.
    static constexpr std::uint64_t numbers(std::size_t fileSize, unsigned line, unsigned level) {
        return static_cast<std::uint64_t>(fileSize) << 40U | static_cast<std::uint64_t>(line) << 8U | level;
    }

    // The functions "log" are not inlined, to keep the caller's code short: most calls end at the comparison
    // of levels. All throw std::bad_alloc, and what the logger's function for the level throws.

#if __has_include(<fmt/format.h>)
    template <typename... Values, std::enable_if_t<areTagged<Values...>, int> = 0>
    [[gnu::noinline]] static void log(Checked<typename Tagging<Values>::Type...>, const Logger& logger,
                                      std::uint64_t numbers, const char* file, FormatText format,
                                      const Values&... values) {
        const TaggedValue tagged[] = {tag(values)..., TaggedValue()};
        logTagged(logger, place(numbers, file, {format.data, format.size}), tagged, sizeof...(Values));
    }

    template <typename... Values,
              std::enable_if_t<!areTagged<std::remove_cv_t<std::remove_reference_t<Values>>...>, int> = 0>
    [[gnu::noinline]] static void log(typename Itself<Checked<Values...>>::type, const Logger& logger,
                                      std::uint64_t numbers, const char* file, FormatText format,
                                      Values&&... values) {
        logHere(logger, place(numbers, file, {format.data, format.size}), fmt::make_format_args(values...));
    }
#else
    template <typename... Values>
    [[gnu::noinline]] static void log(Checked<Values...> checked, const Logger& logger, std::uint64_t numbers,
                                      const char* file, FormatText, Values&&... values) {
        logHere(logger, place(numbers, file, checked.get()), std::make_format_args(values...));
    }
#endif

    /// Formats in the library, and logs.
    /// \param values `count` of them, of the types that the format was checked against
    ZAV_LOG_API static void logTagged(const Logger& logger, const Place& place, const TaggedValue* values,
                                      std::size_t count);

private:
    static Place place(std::uint64_t numbers, const char* file, std::string_view format) {
        return {{file, static_cast<std::size_t>(numbers >> 40U)},
                format,
                static_cast<int>(numbers >> 8U & 0xFFFFFFFFU),
                static_cast<Level::LogLevel>(numbers & 0xFFU)};
    }

    /// Logs the formatted text.
    ZAV_LOG_API static void logText(const Logger& logger, const Place& place, std::string_view text);

    /// Logs the format, and why formatting failed.
    /// \param reason null if it is not known
    ZAV_LOG_API static void logFailure(const Logger& logger, const Place& place, const char* reason);

    /// Formats in the caller's program. Only this function needs {fmt} to be linked.
#if __has_include(<fmt/format.h>)
    [[gnu::noinline]] static void logHere(const Logger& logger, const Place& place, fmt::format_args values) {
        fmt::memory_buffer text;
        const auto format = [&] { fmt::vformat_to(fmt::appender(text), place.format, values); };
#else
    [[gnu::noinline]] static void logHere(const Logger& logger, const Place& place, std::format_args values) {
        std::string text;
        const auto format = [&] { std::vformat_to(std::back_inserter(text), place.format, values); };
#endif
        if (succeeds(logger, place, format)) {
            logText(logger, place, {text.data(), text.size()});
        }
    }

    /// Logs the failure if formatting fails.
    template <typename Format>
    static bool succeeds(const Logger& logger, const Place& place, Format format) {
        try {
            format();
            return true;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& exception) {
            logFailure(logger, place, exception.what());
        } catch (...) {
            logFailure(logger, place, nullptr);
        }
        return false;
    }
};

} // namespace Log
} // namespace ZAV
