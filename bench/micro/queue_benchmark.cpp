#include "SampleMessage.h"

#include "log/async/MessageQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

namespace {

using namespace ZAV::Log;

constexpr int BATCH_SIZE = 1000;

/// The process's queue, without a limit; nobody waits for its messages.
MessageQueue& unboundedQueue() {
    static MessageQueue& queue = *new MessageQueue;
    ZAV::Util::Properties properties;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    queue.configure(properties);
    threadRecord().ring = nullptr; // one of the library's own queue, which other benchmarks have used
    return queue;
}

/// What a producer pays for handing a message over.
void enqueue(benchmark::State& state) {
    MessageQueue& queue = unboundedQueue();
    MessageBatch batch;
    const LogMessage message = Bench::makeMessage();
    while (state.KeepRunningBatch(BATCH_SIZE)) {
        for (int i = 0; i < BATCH_SIZE; ++i) {
            queue.append(message);
        }
        queue.take(batch);
        queue.release(batch, true);
    }
}

/// The same, and what the consumer pays for taking it out.
void enqueueAndRead(benchmark::State& state) {
    MessageQueue& queue = unboundedQueue();
    MessageBatch batch;
    const LogMessage message = Bench::makeMessage();
    while (state.KeepRunningBatch(BATCH_SIZE)) {
        for (int i = 0; i < BATCH_SIZE; ++i) {
            queue.append(message);
        }
        queue.take(batch);
        for (batch.rewind(); batch.hasNext();) {
            benchmark::DoNotOptimize(batch.next());
        }
        queue.release(batch, true);
    }
}

} // namespace

BENCHMARK(enqueue);
BENCHMARK(enqueueAndRead);
