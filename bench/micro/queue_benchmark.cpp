#include "SampleMessage.h"

#include "log/async/MessageBatch.h"
#include "log/async/MessageQueue.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

namespace {

using namespace ZAV::Log;

constexpr int BATCH_SIZE = 1000;

/// A queue without a limit; nobody waits for its messages.
void configureUnbounded(MessageQueue& queue) {
    ZAV::Util::Properties properties;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    queue.configure(properties);
}

/// What a producer pays for handing a message over.
void enqueue(benchmark::State& state) {
    MessageQueue queue;
    configureUnbounded(queue);
    const LogMessage message = Bench::makeMessage();
    while (state.KeepRunningBatch(BATCH_SIZE)) {
        for (int i = 0; i < BATCH_SIZE; ++i) {
            queue.append(message);
        }
        benchmark::DoNotOptimize(queue.takeBatch().size());
    }
}

/// The same, and what the consumer pays for taking it out.
void enqueueAndRead(benchmark::State& state) {
    MessageQueue queue;
    configureUnbounded(queue);
    const LogMessage message = Bench::makeMessage();
    while (state.KeepRunningBatch(BATCH_SIZE)) {
        for (int i = 0; i < BATCH_SIZE; ++i) {
            queue.append(message);
        }
        const MessageBatch batch = queue.takeBatch();
        for (MessageBatch::Reader reader(batch); reader.hasNext();) {
            benchmark::DoNotOptimize(reader.next());
        }
    }
}

} // namespace

BENCHMARK(enqueue);
BENCHMARK(enqueueAndRead);
