#include "log/CommandListener.h"

#include "log/commands/CommandBus.h"

namespace ZAV {
namespace Log {

/// A net under listeners that are destroyed while they are registered.
CommandListener::~CommandListener() {
    CommandBus::instance().unregisterListener(this);
}

} // namespace Log
} // namespace ZAV
