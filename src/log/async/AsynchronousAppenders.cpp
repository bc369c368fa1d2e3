#include "log/async/AsynchronousAppenders.h"

#include "log/Appender.h"
#include "log/commands/LoggingScope.h"

namespace ZAV {
namespace Log {

using Platform::ScopedLock;

namespace {

/// Each appender has the messages made anew: it is given the whole batch before the next one is, and all of
/// them at once would take several times the memory.
void deliverTo(Appender& appender, const MessageBatch& batch) {
    MessageBatch::Reader messages(batch);
    while (messages.hasNext()) {
        try {
            appender.output(messages.next());
        } catch (...) {
            // Thrown by a listener that was just told of a failed write: it must not end the consumer thread,
            // and with it the log.
            continue;
        }
    }
}

} // namespace

void AsynchronousAppenders::add(Appender* appender) {
    const ScopedLock lock(appendersLock_);
    asynchronousAppenders_.push_back(appender);
}

bool AsynchronousAppenders::remove(Appender* appender) {
    const ScopedLock lock(appendersLock_);
    asynchronousAppenders_.remove(appender);
    return asynchronousAppenders_.empty();
}

bool AsynchronousAppenders::deliver(const MessageBatch& batch) {
    const LoggingScope scope;
    const ScopedLock lock(appendersLock_);
    for (Appender* const appender : asynchronousAppenders_) {
        deliverTo(*appender, batch);
    }
    return !asynchronousAppenders_.empty();
}

} // namespace Log
} // namespace ZAV
