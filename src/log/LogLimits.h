#pragma once

/// \file
/// Logging statements that would come too often, limited at the place where they stand:
///
///     ZAV_LOG_EVERY_NTH(1000, ZAV_LOG_INFO(logger, "packets go on"));
///     ZAV_LOG_AT_MOST_EVERY(std::chrono::seconds(10),
///                           ZAV_LOG_WARNING(logger, "queue full, left out: " << ZAV_LOG_SUPPRESSED));
///     ZAV_LOG_ONCE(logger.warning("the old protocol is still in use", 0, ""));
///
/// The statement is any one; commas in it do no harm. It is not evaluated when it is left out. A macro is one
/// statement, also in an unbraced `if` with an `else`, and may stand in another one: the outer limit then
/// decides first, and the inner one counts the calls that come through.
///
/// Each place in the source counts for itself, for all threads, without a lock. A call counts whether or not
/// the logger lets the statement through, and one whose statement throws was not left out. Each instantiation
/// of a template is a place of its own; an inline function is one in the whole program, except that a DLL,
/// or a library that hides its symbols, has its own copy of it.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

/// In the statement of a limit: the number of calls at this place that were left out since the last one that
/// was not, a `std::uint64_t`. Of nested limits it is the innermost one's.
#define ZAV_LOG_SUPPRESSED (*zavLogSuppressed)

/// The first call, and every nth after it.
/// \param n an integer, evaluated with each call; with 0 or less every call is let through
#define ZAV_LOG_EVERY_NTH(n, ...) ZAV_LOG_LIMITED(EveryNth, n, __VA_ARGS__)

/// The first call, and then each one that comes when the duration has passed since the last that was not left
/// out, on a clock that nobody sets.
/// \param duration of `std::chrono`, evaluated with each call; with 0 or less every call is let through
#define ZAV_LOG_AT_MOST_EVERY(duration, ...) ZAV_LOG_LIMITED(AtMostEvery, duration, __VA_ARGS__)

/// The first call only.
#define ZAV_LOG_ONCE(...) ZAV_LOG_LIMITED(Once, , __VA_ARGS__)

/// The part that all macros share. The limit needs no code that makes it, and so no lock either.
#define ZAV_LOG_LIMITED(Limit, bound, ...)                                                                   \
    do {                                                                                                     \
        ZAV_LOG_MAY_SHADOW(static ::ZAV::Log::Limits::Limit zavLogLimit;                                     \
                           const ::ZAV::Log::Limits::Passed zavLogSuppressed = zavLogLimit.pass(bound);)     \
        if (zavLogSuppressed) {                                                                              \
            __VA_ARGS__;                                                                                     \
        }                                                                                                    \
    } while (false)

/// Limits that stand in one another declare the same names: on purpose, and without a warning.
#if defined(__clang__)
#define ZAV_LOG_MAY_SHADOW(...)                                                                              \
    _Pragma("clang diagnostic push") _Pragma("clang diagnostic ignored \"-Wshadow\"")                        \
        __VA_ARGS__ _Pragma("clang diagnostic pop")
#elif defined(__GNUC__)
#define ZAV_LOG_MAY_SHADOW(...)                                                                              \
    _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Wshadow\"")                            \
        _Pragma("GCC diagnostic ignored \"-Wshadow=local\"")                                                 \
            _Pragma("GCC diagnostic ignored \"-Wshadow=compatible-local\"")                                  \
                __VA_ARGS__ _Pragma("GCC diagnostic pop")
#elif defined(_MSC_VER)
#define ZAV_LOG_MAY_SHADOW(...)                                                                              \
    __pragma(warning(push)) __pragma(warning(disable : 4456)) __VA_ARGS__ __pragma(warning(pop))
#else
#define ZAV_LOG_MAY_SHADOW(...) __VA_ARGS__
#endif

namespace ZAV {
namespace Log {

/// Used by the macros of `log/LogLimits.h`, not directly: what each place keeps. Any number of threads may
/// call `pass` at once; each call is either let through or in the number of exactly one that is.
namespace Limits {

/// Whether a call is let through, and if so how many were left out before it.
using Passed = std::optional<std::uint64_t>;

/// Lets the first call through and every nth after it.
class EveryNth {
public:
    template <typename Number>
    Passed pass(Number n) noexcept {
        static_assert(std::is_integral_v<Number>, "every how many calls is a whole number");
        const bool limits = n > Number(1);
        std::uint64_t calls = calls_.load(std::memory_order_relaxed);
        bool passes = true;
        do {
            passes = !limits || calls == 0 || calls >= static_cast<std::uint64_t>(n);
        } while (!calls_.compare_exchange_weak(calls, passes ? 1 : calls + 1, std::memory_order_relaxed));
        if (!passes) {
            return std::nullopt;
        }
        return calls == 0 ? 0 : calls - 1;
    }

private:
    std::atomic<std::uint64_t> calls_{0}; ///< since one was let through, and with it; 0 before the first
};

/// Lets a call through when a time has passed since it let one through.
class AtMostEvery {
public:
    using Clock = std::chrono::steady_clock;

    template <typename Count, typename Unit>
    Passed pass(std::chrono::duration<Count, Unit> duration, Clock::time_point now = Clock::now()) noexcept {
        // Floating-point numbers, since the longest durations have more nanoseconds than an integer holds.
        using Nanoseconds = std::chrono::duration<double, std::nano>;
        const bool limits = duration > duration.zero();
        const Clock::rep moment = now.time_since_epoch().count();
        Clock::rep last = last_.load(std::memory_order_relaxed);
        do {
            const Nanoseconds elapsed =
                Nanoseconds(now.time_since_epoch()) - Nanoseconds(Clock::duration(last));
            if (limits && last != NEVER && elapsed < Nanoseconds(duration)) {
                leftOut_.fetch_add(1, std::memory_order_relaxed);
                return std::nullopt;
            }
        } while (!last_.compare_exchange_weak(last, moment, std::memory_order_relaxed));
        return leftOut_.exchange(0, std::memory_order_relaxed);
    }

private:
    static constexpr Clock::rep NEVER = std::numeric_limits<Clock::rep>::min();

    std::atomic<Clock::rep> last_{NEVER}; ///< when a call was let through
    std::atomic<std::uint64_t> leftOut_{0};
};

/// Lets the first call through.
class Once {
public:
    Passed pass() noexcept {
        if (hasPassed_.load(std::memory_order_relaxed) ||
            hasPassed_.exchange(true, std::memory_order_relaxed)) {
            return std::nullopt;
        }
        return 0;
    }

private:
    std::atomic<bool> hasPassed_{false};
};

} // namespace Limits
} // namespace Log
} // namespace ZAV
