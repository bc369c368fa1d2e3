#pragma once

#include <cstddef>
#include <string>

namespace Bench {

/// The message that every logger writes, and the line that it must produce, for example "2013.05.07
/// 14:03:27:123000 net.tcp Socket.cpp:120 INFO connected to the backend server, request 12345".
namespace SampleLine {

constexpr const char* TEXT = "connected to the backend server, request 12345";
constexpr const char* SOURCE_FILE = "Socket.cpp";
constexpr int SOURCE_LINE = 120;

/// Parts of the regular expressions that the lines are checked against.
constexpr const char* TIME_PATTERN = R"(\d{4}\.\d\d\.\d\d \d\d:\d\d:\d\d:\d{6})";
constexpr const char* PROCESS_PATTERN = R"( [\w.-]+ \d+ [\w.-]+)";
constexpr const char* MESSAGE_PATTERN =
    R"( net\.tc[p0-9] Socket\.cpp:120 INFO connected to the backend server, request 12345)";

inline std::string pattern() {
    return std::string(TIME_PATTERN) + MESSAGE_PATTERN;
}

/// The call with values: "user 12 left after 3 s from 10.0.0.1". It uses the call's own source location.
constexpr const char* VALUES_END = " s from 10.0.0.1";
constexpr const char* VALUES_TEXT_PATTERN = R"(user \d+ left after [\d.e+]+ s from 10\.0\.0\.1)";

inline std::string patternWithValues() {
    return std::string(TIME_PATTERN) + R"( net\.tc[p0-9] \S+:\d+ INFO )" + VALUES_TEXT_PATTERN;
}

/// The line that also shows the program's name, the process id and the host's name.
inline std::string patternWithProcess() {
    return std::string(TIME_PATTERN) + PROCESS_PATTERN + MESSAGE_PATTERN;
}

/// The call with the context request=r1, user=7 and the values order=17, amount=4.25, customer=ACME, as JSON.
/// Each logger has its own members besides these, and quotes numbers if it knows only strings.
inline std::string jsonPattern() {
    return R"((?=.*"order": ?"?17\b)(?=.*"amount": ?"?4\.25\b)(?=.*"customer": ?"ACME")(?=.*"request": ?"r1"))"
           R"((?=.*"user": ?"?7\b)(?=.*order charged)\{.*\})";
}

/// The name of the logger that all threads share.
inline std::string sharedLoggerName() {
    return "net.tcp";
}

/// The name of a thread's own logger, as long as the shared one's.
inline std::string ownLoggerName(std::size_t thread) {
    return "net.tc" + std::to_string(thread);
}

} // namespace SampleLine
} // namespace Bench
