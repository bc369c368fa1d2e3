#include "SampleMessage.h"

#include "log/async/MessageQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

namespace {

using namespace ZAV::Log;

constexpr int BATCH_SIZE = 1000;

/// The process's queue, without a limit and without a consumer.
MessageQueue& unboundedQueue() {
    static MessageQueue& queue = *new MessageQueue;
    ZAV::Util::Properties properties;
    properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
    queue.configure(properties);
    threadRecord().ring = nullptr; // it belongs to the library's own queue, used by other benchmarks
    return queue;
}

/// The producer's cost of handing over a message.
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

/// The same, and the consumer's cost of taking it out.
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
