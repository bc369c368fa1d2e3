#pragma once

/// \file
/// Limits how often a logging statement is executed:
///
///     #include "log/LogMacros.h"
///
///     void receive(ZAV::Log::Logger& logger, bool isFull) {
///         ZAV_LOG_EVERY_NTH(1000, ZAV_LOG_INFO(logger, "another thousand packets"));
///         if (isFull) {
///             ZAV_LOG_AT_MOST_EVERY(std::chrono::seconds(10),
///                                   ZAV_LOG_WARNING(logger, "full; left out: " << ZAV_LOG_SUPPRESSED));
///         }
///         ZAV_LOG_ONCE(logger.warning("the old protocol is still in use", __LINE__, __FILE__));
///     }
///
/// Any statement will do; it may contain commas. When it is suppressed, it is not evaluated. A macro is a
/// single statement, even in an unbraced `if` with an `else`. Limits may be nested: the outer one decides
/// first, and the inner one counts the calls that the outer one lets through.
///
/// Each place in the source has its own count, which all threads share, without a lock. A call counts whether
/// or not the logger lets the message through, and a statement that throws counts as executed. Each
/// instantiation of a template is a place of its own. An inline function is one place in the whole program,
/// except that a DLL, or a library that hides its symbols, has its own copy of it.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

/// In the statement of a limit: how many calls were suppressed at this place since the last one that was not,
/// a `std::uint64_t`. With nested limits it is the count of the innermost one.
#define ZAV_LOG_SUPPRESSED (*zavLogSuppressed)

/// Executes the first call, and every nth after it.
/// \param n an integer, evaluated in each call; with 0 or less every call is executed
#define ZAV_LOG_EVERY_NTH(n, ...) ZAV_LOG_LIMITED(EveryNth, n, __VA_ARGS__)

/// Executes the first call, and then each call that comes at least the duration after the last one that was
/// executed, by a monotonic clock.
/// \param duration of `std::chrono`, evaluated in each call; with 0 or less every call is executed
#define ZAV_LOG_AT_MOST_EVERY(duration, ...) ZAV_LOG_LIMITED(AtMostEvery, duration, __VA_ARGS__)

/// Executes the first call only.
#define ZAV_LOG_ONCE(...) ZAV_LOG_LIMITED(Once, , __VA_ARGS__)

/// Shared by all macros. The limit is initialised at compile time, and so needs no lock.
#define ZAV_LOG_LIMITED(Limit, bound, ...)                                                                   \
    do {                                                                                                     \
        ZAV_LOG_MAY_SHADOW(static ::ZAV::Log::Limits::Limit zavLogLimit;                                     \
                           const ::ZAV::Log::Limits::Passed zavLogSuppressed = zavLogLimit.pass(bound);)     \
        if (zavLogSuppressed) {                                                                              \
            __VA_ARGS__;                                                                                     \
        }                                                                                                    \
    } while (false)

/// Nested limits declare the same names. That is on purpose and should cause no warning.
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

/// Used by the macros of `log/LogLimits.h`, not directly: the state of each place. Several threads may call
/// `pass` at once. Each call either passes, or is counted for exactly one that does.
namespace Limits {

/// Has a value if the call passes: how many were suppressed before it.
using Passed = std::optional<std::uint64_t>;

/// Lets the first call pass, and every nth after it.
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
    std::atomic<std::uint64_t> calls_{0}; ///< since the last that passed, including it; 0 at first
};

/// Lets a call pass if the duration has elapsed since the last that passed.
class AtMostEvery {
public:
    using Clock = std::chrono::steady_clock;

    template <typename Count, typename Unit>
    Passed pass(std::chrono::duration<Count, Unit> duration, Clock::time_point now = Clock::now()) noexcept {
        // In floating point, since the longest durations have more nanoseconds than an integer can hold.
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

    std::atomic<Clock::rep> last_{NEVER}; ///< when a call last passed
    std::atomic<std::uint64_t> leftOut_{0};
};

/// Lets the first call pass.
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
