#include "log/CommandListener.h"

#include "log/commands/CommandBus.h"

namespace ZAV {
namespace Log {

namespace {

/// The destructor may run at the end of the process, which a call that never returns must not keep from it.
constexpr std::chrono::seconds LONGEST_CALL_AT_END{2};

} // namespace

CommandListener::~CommandListener() {
    if (wasRegistered_) {
        CommandBus::instance().unregisterListener(this, LONGEST_CALL_AT_END);
    }
}

} // namespace Log
} // namespace ZAV
