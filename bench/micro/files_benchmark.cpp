// The cost of a line in each class of file appender that keeps its file open. Measure both interleaved, in
// the folder for temporary files: --benchmark_repetitions=20 --benchmark_enable_random_interleaving=true

#include "SampleMessage.h"

#include "log/appenders/FileAppender.h"
#include "log/appenders/RollingFileAppender.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

namespace {

using namespace ZAV::Log;

/// A private folder, removed with its content.
class Folder {
public:
    explicit Folder(const std::string& name) : path_(std::filesystem::temp_directory_path() / name) {
        std::filesystem::create_directory(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path() const { return path_.string(); }

private:
    const std::filesystem::path path_;
};

AppenderValues valuesIn(const Folder& folder) {
    AppenderValues values("file");
    values.dir = folder.path();
    values.fileMaxSize = 100'000'000;
    values.rollSize = 100'000'000;
    values.rollAt = RollMoment::MIDNIGHT;
    values.keepFiles = 3;
    return values;
}

template <typename FileClass>
void lineInFile(benchmark::State& state) {
    const Folder folder("zav-log-micro-files");
    FileClass appender(valuesIn(folder), Appender::Filters());
    const LogMessage message = Bench::makeMessage();
    for (auto _ : state) {
        appender.output(message);
    }
}

} // namespace

BENCHMARK(lineInFile<FileAppender>)->Name("lineInFile/FileAppender");
BENCHMARK(lineInFile<RollingFileAppender>)->Name("lineInFile/RollingFileAppender");
