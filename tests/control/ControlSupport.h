#pragma once

#include "ControlAddress.h"
#include "TestSupport.h"

#include "control/ControlLoop.h"
#include "log/LogManager.h"
#include "platform/LocalSocket.h"

#include <gmock/gmock.h>
#include <thread>

namespace ZAV {
namespace TestSupport {

/// A server whose limits the test chooses.
class ShortServer {
public:
    ShortServer(const std::string& address, const Log::ControlLoop::Limits& limits)
        : loop_(address, limits), thread_([this] { loop_.run(); }) {}
    ~ShortServer() {
        loop_.stop();
        thread_.join();
    }

private:
    Log::ControlLoop loop_;
    std::thread thread_;
};

/// A client that says what the test has it say. A server that does not answer makes the test fail.
class Client {
public:
    explicit Client(const std::string& address) : connection_(address, std::chrono::minutes(1)) {}

    void say(const std::string& bytes) { connection_.send(bytes); }

    /// \return the lines of the next answer, up to and with the last one
    std::string answer() {
        std::string lines;
        for (;;) {
            const std::string line = nextLine();
            lines += line;
            if (line.empty() || line == "ok\n" || line.compare(0, 7, "error: ") == 0) {
                return lines;
            }
        }
    }

    std::string ask(const std::string& request) {
        say(request + "\n");
        return answer();
    }

    /// Waits until the server hangs up.
    /// \return what it said before
    std::string rest() {
        std::string bytes = received_;
        for (std::string more = connection_.receive(); !more.empty(); more = connection_.receive()) {
            bytes += more;
        }
        return bytes;
    }

private:
    std::string nextLine() {
        std::string::size_type end = received_.find('\n');
        for (std::string more = "."; end == std::string::npos && !more.empty(); end = received_.find('\n')) {
            more = connection_.receive();
            received_ += more;
        }
        const std::string line = received_.substr(0, end == std::string::npos ? end : end + 1);
        received_.erase(0, line.size());
        return line;
    }

    Platform::LocalClient connection_;
    std::string received_; ///< what is not read yet
};

/// A test with an address for its server.
class Control : public testing::Test {
protected:
    ~Control() override { Log::LogManager::finish(); }

    const TemporaryDirectory directory_;
    const std::string address_ = controlAddress(directory_);
};

} // namespace TestSupport
} // namespace ZAV
