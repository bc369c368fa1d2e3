#include "platform/Terminal.h"

#include <algorithm>
#include <fcntl.h>
#include <io.h>
#include <ostream>
#include <stdio.h>
#include <system_error>
#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

bool catchesStopSignals_ = false;

HANDLE stopEvent() {
    static const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    return event;
}

/// The second request ends the process, which may be stuck in a write.
BOOL WINAPI onConsoleEvent(DWORD) {
    if (isStopRequested()) {
        return FALSE;
    }
    SetEvent(stopEvent());
    return TRUE;
}

} // namespace

bool catchesStopSignals() {
    return catchesStopSignals_;
}

void catchStopSignals() {
    stopEvent();
    catchesStopSignals_ = true;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

bool isStopRequested() {
    return catchesStopSignals_ && WaitForSingleObject(stopEvent(), 0) == WAIT_OBJECT_0;
}

bool waitForStop(std::chrono::milliseconds time) {
    return WaitForSingleObject(stopEvent(), static_cast<DWORD>(time.count())) == WAIT_OBJECT_0;
}

bool writeToStream(std::ostream& stream, std::string_view text) {
    const std::ios_base::iostate before = stream.rdstate();
    stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    const bool isWritten = stream.good();
    if (stream.rdstate() != before) {
        stream.clear(before);
    }
    return isWritten;
}

namespace {

constexpr std::size_t LARGEST_WRITE = 1024 * 1024;

} // namespace

void prepareStandardOutput() {
    _setmode(_fileno(stdout), _O_BINARY);
}

WriteResult writeStandardOutput(std::string_view text, std::string& problem) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    while (!text.empty()) {
        DWORD written = 0;
        const DWORD size = static_cast<DWORD>(std::min(text.size(), LARGEST_WRITE));
        if (!WriteFile(output, text.data(), size, &written, nullptr)) {
            const DWORD error = GetLastError();
            if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA) {
                return WriteResult::NO_READER;
            }
            problem = std::system_category().message(static_cast<int>(error));
            return WriteResult::FAILED;
        }
        text.remove_prefix(written);
    }
    return WriteResult::WRITTEN;
}

bool isTerminal(StandardStream stream) {
    DWORD mode = 0;
    const DWORD number = stream == STANDARD_OUTPUT ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE;
    return GetConsoleMode(GetStdHandle(number), &mode) != 0;
}

bool showsColors() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != 0 &&
           SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

} // namespace Platform
} // namespace ZAV
