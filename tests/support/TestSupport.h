#pragma once

#include "Calling.h"

#include "log/LogCapture.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <iostream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace ZAV::TestSupport {

/// A message with default values for most fields.
inline Log::LogMessage makeMessage(const std::string& text,
                                   Log::Level::LogLevel level = Log::Level::LEVEL_INFO,
                                   const std::string& loggerName = "net.tcp",
                                   Util::TimeUtils::Time time = Util::TimeUtils::Time::now(),
                                   Log::MessageType type = Log::LOG) {
    return Log::LogMessage(loggerName, time, level, text, 0, "", type);
}

/// Records the messages that it receives.
class RecordingAppender : public Log::Appender {
public:
    using Appender::Appender;
    std::vector<Log::LogMessage> messages;
    std::vector<std::string> texts; ///< of the messages

protected:
    void doOutput(const Log::LogMessage& message) override {
        messages.push_back(message);
        texts.push_back(message.getText());
    }
};

/// The texts of the recorded messages.
inline std::vector<std::string> textsOf(const Log::LogCapture& capture) {
    std::vector<std::string> texts;
    for (const Log::LogMessage& message : capture.messages()) {
        texts.push_back(message.getText());
    }
    return texts;
}

/// Waits for the first command that another thread issues.
class AwaitedCommand : public Log::CommandListener {
public:
    void onCommand(const std::string& argument) override {
        if (!isHeard_) {
            isHeard_ = true;
            argument_.set_value(argument);
        }
    }
    std::string await() { return argument_.get_future().get(); }

private:
    bool isHeard_ = false; ///< commands are delivered one at a time
    std::promise<std::string> argument_;
};

/// Records the arguments of the commands that it receives.
class RecordingListener : public Log::CommandListener {
public:
    void onCommand(const std::string& argument) override { arguments.push_back(argument); }
    std::vector<std::string> arguments;
};

/// The lines of a text, each without its leading time.
inline std::vector<std::string> linesIn(const std::string& text, std::size_t timeLength = 27) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line.substr(std::min(timeLength, line.size())));
    }
    return lines;
}

/// The last word of every line of a text.
inline std::vector<std::string> lastWordsIn(const std::string& text) {
    std::vector<std::string> words = linesIn(text);
    for (std::string& word : words) {
        word.erase(0, word.rfind(' ') + 1);
    }
    return words;
}

/// Redirects a standard stream to memory during its lifetime.
class StreamCapture {
public:
    explicit StreamCapture(std::ostream& stream)
        : stream_(stream), original_(stream.rdbuf(memory_.rdbuf())) {}
    ~StreamCapture() { stream_.rdbuf(original_); }
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;
    std::string text() const { return memory_.str(); }

private:
    std::ostream& stream_;
    std::ostringstream memory_;
    std::streambuf* original_;
};

/// A private directory of the running test, removed with its content.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        const std::string pattern = (std::filesystem::temp_directory_path() / "zav-log-test-").string();
        int number = 0;
        do {
            path_ = pattern + std::to_string(number++);
        } while (!std::filesystem::create_directory(path_));
    }
    /// Windows does not remove a file that is open, as a queue file is until the process ends.
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string path() const { return path_.generic_string(); }
    std::string operator/(const std::string& name) const { return (path_ / name).generic_string(); }

private:
    std::filesystem::path path_;
};

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// The content with line ends converted to line feeds.
inline std::string readFile(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

inline bool fileExists(const std::string& path) {
    return std::filesystem::exists(path);
}

/// Runs a statement that must throw; returns the exception's text.
template <typename Exception, typename Statement>
std::string textThrownBy(Statement statement) {
    try {
        statement();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing was thrown";
}

} // namespace ZAV::TestSupport
