#include "log/CommandListener.h"

#include "log/commands/CommandBus.h"

namespace ZAV {
namespace Log {

/// A listener that was never registered does not wait for the bus: it may be destroyed under a lock that
/// another listener wants.
CommandListener::~CommandListener() {
    if (wasRegistered_) {
        CommandBus::instance().unregisterListener(this);
    }
}

} // namespace Log
} // namespace ZAV
