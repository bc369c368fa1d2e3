#include "SampleMessage.h"

#include "log/async/MessageQueue.h"
#include "log/reentrancy/LibraryCall.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

#include <utility>

namespace {

using namespace ZAV::Log;

constexpr int BATCH_SIZE = 1000;

/// A queue without a limit and without a consumer, as the only one of the process: the thread's ring belongs
/// to the library's own queue, which other benchmarks use, and is put back afterwards.
class UnboundedQueue {
public:
    UnboundedQueue() : ringBefore_(std::exchange(threadRecord().ring, nullptr)) {
        ZAV::Util::Properties properties;
        properties["zav.log.AsynchronousDispatcher.maxQueueSize"] = "-1";
        queue.configure(properties);
    }
    ~UnboundedQueue() { threadRecord().ring = ringBefore_; }
    UnboundedQueue(const UnboundedQueue&) = delete;
    UnboundedQueue& operator=(const UnboundedQueue&) = delete;

    MessageQueue& queue = *new MessageQueue; // never destroyed, as the library's own

private:
    Ring* const ringBefore_;
};

/// The producer's cost of handing over a message.
void enqueue(benchmark::State& state) {
    const UnboundedQueue own;
    MessageQueue& queue = own.queue;
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
    const UnboundedQueue own;
    MessageQueue& queue = own.queue;
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
