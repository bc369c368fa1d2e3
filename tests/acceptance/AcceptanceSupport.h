#pragma once

#include "TestSupport.h"

#include <thread>

namespace ZAV::TestSupport {

/// Captures what the process writes to standard error, from all threads and by whatever means.
class StandardErrorCapture {
public:
    StandardErrorCapture() { testing::internal::CaptureStderr(); }

    /// Ends the capture.
    std::string text() { return testing::internal::GetCapturedStderr(); }
};

/// Runs a function in several threads at once, passing each its number, and joins all of them.
template <typename Function>
void inThreads(int count, Function function) {
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&function, number] { function(number); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// An application that initialises the library from a property file and has its own log directory.
class Application : public testing::Test {
protected:
    ~Application() override { Log::LogManager::finish(); }

    /// \param lines of the property file, in which "DIR" stands for the directory
    bool init(const std::string& lines) {
        writeProperties(lines);
        return Log::LogManager::init(directory_ / "app.properties");
    }

    /// Changes the property file of a running application, and reloads it.
    void reload(const std::string& lines) const {
        writeProperties(lines);
        Log::LogManager::reload();
    }

    void writeProperties(std::string lines) const {
        const std::string mark = "DIR";
        for (auto at = lines.find(mark); at != std::string::npos; at = lines.find(mark)) {
            lines.replace(at, mark.size(), directory_.path());
        }
        writeFile(directory_ / "app.properties", lines);
    }

    std::vector<std::string> linesOf(const std::string& file) const {
        return linesIn(readFile(directory_ / file));
    }
    std::vector<std::string> lastWordsOf(const std::string& file) const {
        return lastWordsIn(readFile(directory_ / file));
    }

    const TemporaryDirectory directory_;
};

} // namespace ZAV::TestSupport
