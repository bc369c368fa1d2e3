#pragma once

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

/// Whether the compiler knows the text; only then it can check it.
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
/// The text of a format: a literal with all of its characters, or what converts to `std::string_view`.
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
/// \return how many values a format uses at most: those that it names by their positions, or as many as it has fields,
///         those within fields included. One that names a value otherwise may use any.
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
/// Logs messages that are put together from a format and values. Every call of a macro brings code for
/// nothing but the passing of its arguments: values of the usual types are tagged by one function for each
/// list of types, and formatted by the library. Calls with values of other types format here, in the caller's
/// program.
///
/// There is no object of static lifetime, in functions of the caller neither: with g++ it would keep a plugin
/// from being unloaded.
class FormattedMessage {
    template <typename Type>
    struct Itself {
        using type = Type;
    };

#if __has_include(<fmt/format.h>)
    /// Made from a format; that the compiler can make it shows that the format suits values of the types.
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
    /// The numbers of a place as one, which a call passes with one instruction: the size of the file's name,
    /// the line and the level in 24, 32 and 8 bits.
    static constexpr std::uint64_t numbers(std::size_t fileSize, unsigned line, unsigned level) {
        return static_cast<std::uint64_t>(fileSize) << 40U | static_cast<std::uint64_t>(line) << 8U | level;
    }

    // The functions "log" are not inline: the caller's code, which as a rule ends at the comparison of
    // levels, stays short. All throw std::bad_alloc and what the logger's function for the level throws.

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

    /// Formats in the library and logs.
    /// \param values `count` of them, of the types that the format was checked for
    ZAV_LOG_API static void logTagged(const Logger& logger, const Place& place, const TaggedValue* values,
                                      std::size_t count);

private:
    static Place place(std::uint64_t numbers, const char* file, std::string_view format) {
        return {{file, static_cast<std::size_t>(numbers >> 40U)},
                format,
                static_cast<int>(numbers >> 8U & 0xFFFFFFFFU),
                static_cast<Level::LogLevel>(numbers & 0xFFU)};
    }

    /// Logs a text that was made from the format.
    ZAV_LOG_API static void logText(const Logger& logger, const Place& place, std::string_view text);

    /// Logs the format and why no text could be made from it.
    /// \param reason null if it is not known
    ZAV_LOG_API static void logFailure(const Logger& logger, const Place& place, const char* reason);

    /// Formats in the caller's program. The one function that needs {fmt} to be linked.
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

    /// Logs the failure if a text cannot be made.
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
