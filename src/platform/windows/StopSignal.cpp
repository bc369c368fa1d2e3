#include "platform/StopSignal.h"

#include "platform/windows/StopEvent.h"

#include <windows.h>

namespace ZAV {
namespace Platform {

namespace {

bool catchesStopSignals_ = false;

HANDLE stopEvent() {
    static const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    return event;
}

/// The second request ends the process, which may hang in a write.
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

} // namespace Platform
} // namespace ZAV
