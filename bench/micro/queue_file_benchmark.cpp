#include "IdleAppender.h"

#include "log/AppenderOptions.h"
#include "log/LogFormat.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

namespace {

using namespace ZAV::Log;

constexpr int BURST = 20'000;

enum Kept { IN_MEMORY, IN_FILE };

/// Asynchronous, with a consumer that runs only on request; the file is in the folder for temporary files
/// (TMPDIR).
class Application {
public:
    explicit Application(Kept kept) {
        static const bool isRegistered = registerIdle();
        benchmark::DoNotOptimize(isRegistered);
        const std::string dispatcher = "zav.log.AsynchronousDispatcher.";
        ZAV::Util::Properties properties{{"logger.root.level", "INFO"},
                                         {"appender.idle", "IdleAppender"},
                                         {"appender.idle.asynchronous", "true"},
                                         {dispatcher + "maxQueueSize", "-1"},
                                         {dispatcher + "waitingPeriod", "3600"}};
        if (kept == IN_FILE) {
            properties[dispatcher + "queueFile"] = path_;
            properties[dispatcher + "queueFileSize"] = "64 MB";
        }
        LogManager::init(properties);
    }
    ~Application() {
        LogManager::finish();
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

private:
    static bool registerIdle() {
        LogManager::registerAppenderClass("IdleAppender", [](const AppenderOptions& options) {
            return std::make_unique<Bench::IdleAppender>(options);
        });
        return true;
    }

    const std::string path_ = (std::filesystem::temp_directory_path() / "zav-log-micro.queue").string();
};

/// \param isEndToEnd whether the delivery is measured, too
void burst(benchmark::State& state, Kept kept, bool isEndToEnd) {
    const Application application(kept);
    Logger& logger = LoggerFactory::getLogger("net.tcp");
    while (state.KeepRunningBatch(BURST)) {
        for (int number = 0; number < BURST; ++number) {
            ZAV_LOGF_INFO(logger, "order {} of {} charged, {}", number, "somebody", 4.25);
        }
        if (!isEndToEnd) {
            state.PauseTiming();
        }
        LogManager::flush();
        if (!isEndToEnd) {
            state.ResumeTiming();
        }
    }
}

} // namespace

BENCHMARK_CAPTURE(burst, callIntoMemory, IN_MEMORY, false)->UseRealTime();
BENCHMARK_CAPTURE(burst, callIntoFile, IN_FILE, false)->UseRealTime();
BENCHMARK_CAPTURE(burst, throughMemory, IN_MEMORY, true)->UseRealTime();
BENCHMARK_CAPTURE(burst, throughFile, IN_FILE, true)->UseRealTime();
