#pragma once

#include "log/Level.h"
#include "log/MessageStream.h"

#include <cstddef>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#if __has_include(<fmt/compile.h>)
#include <fmt/compile.h>
#include <fmt/format.h>
/// The format as a type that is checked and one that is taken to pieces while the program is compiled: the
/// first refuses more, the second is about a third faster than reading the format with every message.
#define ZAV_LOGF_CHECKED(format) FMT_STRING(format), FMT_COMPILE(format),
#else
#if __has_include(<format>)
#include <format>
#endif
#if !defined(__cpp_lib_format)
#error "log/LogFormat.h needs {fmt} (libfmt-dev, and fmt::fmt or fmt::fmt-header-only to link) or std::format"
#endif
#define ZAV_LOGF_CHECKED(format)
#endif

namespace ZAV {
namespace Log {

class Logger;

/// Used by the macros of `log/LogFormat.h`, not directly.
///
/// A message that the macros of `log/LogFormat.h` put together from a format and values.
class FormattedMessage {
public:
    /// \param level at or above the logger's
    FormattedMessage(const Logger& logger, Level::LogLevel level, int line, std::string_view file)
        : logger_(logger), level_(level), line_(line), file_(file) {}

#if __has_include(<fmt/compile.h>)
    /// Formats and logs. Not inline: the caller's code, which as a rule ends at the comparison of levels,
    /// stays short.
    /// \throw std::bad_alloc and what the logger's function for the level throws
    template <typename Checked, typename Compiled, typename... Values>
    [[gnu::noinline]] void log(Checked checked, Compiled compiled, std::string_view format,
                               Values&&... values) const {
        static_cast<void>(fmt::format_string<Values...>(checked));
        fmt::basic_memory_buffer<char, ROOM> text;
        const auto formatValues = [&] {
            fmt::format_to(fmt::appender(text), compiled, std::forward<Values>(values)...);
        };
        if (succeeds(format, formatValues)) {
            logText(std::string_view(text.data(), text.size()));
        }
    }
#else
    /// Formats and logs, as above. The format is checked by the compiler.
    template <typename... Values>
    void log(std::format_string<Values...> format, Values&&... values) const {
        std::string text;
        text.reserve(ROOM);
        const auto formatValues = [&] {
            std::format_to(std::back_inserter(text), format, std::forward<Values>(values)...);
        };
        if (succeeds(format.get(), formatValues)) {
            logText(text);
        }
    }
#endif

private:
    /// Texts up to this size take no memory from the heap.
    static constexpr std::size_t ROOM = 512;

    /// Logs the failure if the values cannot be formatted.
    template <typename Format>
    bool succeeds(std::string_view format, Format formatValues) const {
        try {
            formatValues();
            return true;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& exception) {
            logFailure(format, exception.what());
        } catch (...) {
            logFailure(format, "unknown exception");
        }
        return false;
    }

    void logFailure(std::string_view format, std::string_view reason) const {
        logText(std::string(format).append(" [not formatted: ").append(reason).append("]"));
    }

    void logText(std::string_view text) const {
        MessageStream::log(logger_, level_, text, line_, file_);
    }

    const Logger& logger_;
    Level::LogLevel level_;
    int line_;
    std::string_view file_;
};

} // namespace Log
} // namespace ZAV
