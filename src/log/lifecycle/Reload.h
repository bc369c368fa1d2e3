#pragma once

#include "log/appenders/AppenderRegistry.h"
#include "log/async/DispatcherSettings.h"
#include "log/tree/TreeChange.h"

#include <chrono>
#include <vector>

namespace ZAV {
namespace Log {

/// The change of a library that is set up to another configuration.
///
/// All that the configuration needs is made first. Then levels, lists of appenders and settings change in one
/// step, while no message is being dispatched: each goes to the appenders of before or to those of
/// afterwards. The consumer delivers what was queued by then to the appenders of before, and what was queued
/// later to those of afterwards. An appender that leaves has closed its file before one that comes can be
/// given a message.
class Reload {
public:
    /// Makes what the configuration needs, and changes nothing. Bad values of loggers and of the dispatcher
    /// are reported on the standard error stream.
    /// \throw what `LogManager::init` would throw
    explicit Reload(const Util::Properties& properties);

    /// Makes the change, and destroys the appenders that have left. To be called once, under the lock of the
    /// life cycle. It waits for appenders that are busy; meanwhile other threads log.
    /// \throw std::bad_alloc; nothing has changed then
    void run();

private:
    using Appenders = std::vector<Appender*>;

    bool takesFilesOver() const;
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
    const bool needsNewConsumer_; ///< its priority is another one
    const bool concernsConsumer_; ///< whether what is queued has to be told from what comes
    const bool takesFilesOver_;   ///< whether the queue must be empty before the change
};

} // namespace Log
} // namespace ZAV
