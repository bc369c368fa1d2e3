/// An appender class of the program's own, which sends lines to the listener of a local socket. The property
/// file configures the socket and everything else as for any other appender:
///
///     appender.remote = SocketAppender
///     appender.remote.asynchronous = true
///     appender.remote.socket = /run/shop/lines.sock

#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LogSession.h"
#include "log/LoggerFactory.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <memory>
#include <string>

namespace Log = ZAV::Log;
using Local = boost::asio::local::stream_protocol;

namespace {

/// Called only by the consumer's thread, so it needs no lock, and logging threads never wait for the socket.
class SocketAppender : public Log::Appender {
public:
    explicit SocketAppender(const Log::AppenderOptions& options)
        : Appender(options), options_(options), path_(options.value("socket", "/run/lines.sock")) {
        if (options.synchronous) {
            throw Log::LogException("A SocketAppender must be asynchronous: " + options.name);
        }
    }

private:
    /// Connects for the first line, and again after a failure. What cannot be sent is reported and dropped.
    void doOutput(const Log::LogMessage& message) override {
        if (!stream_ || !stream_->good()) {
            stream_ = std::make_unique<Local::iostream>(Local::endpoint(path_));
        }
        if (!(*stream_ << options_.formatLine(message) << std::endl)) {
            throw Log::LogException("Cannot send to " + path_ + ": " + stream_->error().message());
        }
    }

    const Log::AppenderOptions options_;
    const std::string path_;
    std::unique_ptr<Local::iostream> stream_;
};

} // namespace

int main(int count, char** arguments) {
    Log::LogManager::registerAppenderClass("SocketAppender", [](const Log::AppenderOptions& options) {
        return std::make_unique<SocketAppender>(options);
    });
    const Log::LogSession session(count > 1 ? arguments[1] : "app.properties");
    for (int number = 1; number <= 3; ++number) {
        ZAV_LOG_INFO(Log::LoggerFactory::getLogger("shop"), "order " << number);
    }
}
