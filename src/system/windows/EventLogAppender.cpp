#include "system/windows/EventLogAppender.h"

#include "log/LogException.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"
#include "log/SystemAppenders.h"
#include "system/VisibleText.h"

// Leaves out the headers that define ERROR and other common words as macros.
#define NOGDI
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/windows/Handle.h"

#include <cstddef>
#include <string>

namespace ZAV {
namespace Log {

namespace {

/// The id of every event. In EventCreate.exe, a message file that comes with Windows, message 1 is just the
/// text.
constexpr DWORD EVENT_ID = 1;

/// The system refuses longer texts.
constexpr std::size_t LONGEST = 31839;

/// Invalid UTF-8 becomes U+FFFD.
std::wstring wideOf(const std::string& text) {
    const auto size = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

/// The event viewer takes "%" and a digit as a placeholder, even inside an inserted text.
void partMarks(std::wstring& text) {
    for (std::size_t at = text.find(L'%'); at != std::wstring::npos; at = text.find(L'%', at + 1)) {
        if (at + 1 < text.size() && text[at + 1] >= L'0' && text[at + 1] <= L'9') {
            text.insert(at + 1, 1, L' ');
        }
    }
}

/// Truncates a text that is too long, but not within a surrogate pair.
void cut(std::wstring& text) {
    if (text.size() > LONGEST) {
        text.resize(text[LONGEST] >= 0xdc00 && text[LONGEST] <= 0xdfff ? LONGEST - 1 : LONGEST);
    }
}

/// The event log has only these types; its audit types are reserved for the security log.
WORD typeOf(Level::LogLevel level) {
    switch (level) {
    case Level::LEVEL_ERROR:
        return EVENTLOG_ERROR_TYPE;
    case Level::LEVEL_WARNING:
        return EVENTLOG_WARNING_TYPE;
    default:
        return EVENTLOG_INFORMATION_TYPE;
    }
}

/// \return the file name of the program, without folder and ".exe"
std::wstring programName() {
    std::wstring path(32768, L'\0'); // the longest possible path
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    path.erase(0, path.find_last_of(L"\\/") + 1);
    return path.substr(0, path.rfind(L'.'));
}

HANDLE openSource(const AppenderOptions& options) {
    const std::string name = options.value("source");
    const HANDLE source =
        RegisterEventSourceW(nullptr, (name.empty() ? programName() : wideOf(name)).c_str());
    if (source == nullptr) {
        throw LogException("Cannot open the event log for " + options.name + ": " +
                           Platform::systemFailure().what());
    }
    return source;
}

} // namespace

std::wstring eventTextOf(const std::string& line) {
    std::wstring text = wideOf(withVisibleNul(line));
    partMarks(text);
    cut(text);
    return text;
}

EventLogAppender::EventLogAppender(const AppenderOptions& options)
    : Appender(options), options_(options), source_(openSource(options)) {}

EventLogAppender::~EventLogAppender() {
    DeregisterEventSource(source_);
}

void EventLogAppender::doOutput(const LogMessage& message) {
    const std::wstring text = eventTextOf(options_.formatLine(message));
    const wchar_t* texts[] = {text.c_str()};
    if (ReportEventW(source_, typeOf(message.getLevel()), 0, EVENT_ID, nullptr, 1, 0, texts, nullptr) == 0) {
        throw LogException(std::string("Cannot write to the event log: ") + Platform::systemFailure().what());
    }
}

void registerSystemAppenders() {
    LogManager::registerAppenderClass("EventLogAppender", [](const AppenderOptions& options) {
        return std::make_unique<EventLogAppender>(options);
    });
}

} // namespace Log
} // namespace ZAV
