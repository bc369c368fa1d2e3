#pragma once

#include "log/appenders/AppenderRegistry.h"
#include "log/config/DispatcherSettings.h"
#include "log/tree/TreeChange.h"

#include <chrono>
#include <vector>

namespace ZAV {
namespace Log {

/// Changes the initialised library to another configuration.
///
/// Everything that the configuration needs is created first. Then levels, appender lists and settings change
/// in one step, while no message is being dispatched: each message goes either to the old appenders or to the
/// new ones. The consumer delivers what was queued by then to the old appenders, and what is queued later to
/// the new ones. A removed appender has closed its file before a new one can get a message.
class Reload {
public:
    /// Creates what the configuration needs, and changes nothing. Invalid values of loggers and of the
    /// dispatcher are reported on the standard error stream.
    /// \throw what `LogManager::init` would throw
    explicit Reload(const Util::Properties& properties);

    /// Makes the change, and destroys the removed appenders. It must be called once, under the life-cycle
    /// lock. It waits for busy appenders; meanwhile other threads may log.
    /// \throw std::bad_alloc; nothing has changed then
    void run();

private:
    using Appenders = std::vector<Appender*>;

    bool reusesFiles() const;
    bool concernsConsumer() const;

    void changePlaces();
    void awaitAppenders() const;
    bool awaitAppenders(std::chrono::milliseconds limit) const;
    void changeAtOnce();
    void changeConsumer();
    void closeFiles(bool synchronous) const;
    void restoreLevels(bool synchronous) const;

    TreeChange tree_;
    AppenderExchange appenders_;
    const DispatcherSettings settings_;
    const bool needsNewConsumer_; ///< because its priority changes
    const bool concernsConsumer_; ///< whether queued messages must be told apart from later ones
    const bool mustDrain_;        ///< whether the queue must be empty before the change
};

} // namespace Log
} // namespace ZAV
