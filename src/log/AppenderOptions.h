#pragma once

/// \file
/// Lets the configuration create appenders of the application's own classes.

#include "log/Appender.h"
#include "zav-util/Export.h"

#include <boost/shared_ptr.hpp>
#include <string>

namespace ZAV {
namespace Util {
class Properties;
}

namespace Log {

class LogMessage;

/// The configured settings of one appender, whose class the application has registered with
/// `LogManager::registerAppenderClass`:
///
///     #include "log/LogManager.h"
///     #include "log/LogSession.h"
///
///     class Producer { // from the client library, say
///     public:
///         explicit Producer(const std::string& brokers);
///         void send(const std::string& line);
///     };
///
///     class KafkaAppender : public ZAV::Log::Appender {
///     public:
///         explicit KafkaAppender(const ZAV::Log::AppenderOptions& options)
///             : Appender(options), options_(options), producer_(options.value("brokers", "localhost")) {}
///
///     private:
///         void doOutput(const ZAV::Log::LogMessage& message) override {
///             producer_.send(options_.formatLine(message));
///         }
///
///         const ZAV::Log::AppenderOptions options_;
///         Producer producer_;
///     };
///
///     int main() {
///         const auto make = [](const ZAV::Log::AppenderOptions& options) {
///             return std::make_unique<KafkaAppender>(options);
///         };
///         ZAV::Log::LogManager::registerAppenderClass("KafkaAppender", make);
///         const ZAV::Log::LogSession session("app.properties"); // with "appender.orders = KafkaAppender"
///         // ...
///     }
///
/// An object can be copied and kept. Several threads may use it at once, as long as none of them changes its
/// members.
struct ZAV_LOG_API AppenderOptions {
    /// Reads the keys "appender.<name>.*" of a configuration, as `LogManager::init` does. The filter for a
    /// level that a command may lower (the keys `level` and `expiration`) listens for commands as long as a
    /// copy of the filters exists, but not beyond `LogManager::finish`.
    /// \throw LogException for an invalid level, message type or expiration
    AppenderOptions(const std::string& appenderName, const Util::Properties& properties);
    ~AppenderOptions();
    AppenderOptions(const AppenderOptions& other);
    AppenderOptions& operator=(const AppenderOptions& other);

    /// \return the line for a message, without a line end, in the form that `layout`, `fields` and `escape`
    ///         select
    std::string formatLine(const LogMessage& message) const;

    /// \param key the end of a key: "brokers" for "appender.<name>.brokers"
    /// \return its value, or `byDefault` if the configuration does not have the key
    std::string value(const std::string& key, const std::string& byDefault = std::string()) const;

    std::string name;
    bool synchronous;          ///< false if the key `asynchronous` is "true"
    Appender::Filters filters; ///< from the keys `filters`, `level`, `expiration` and `message_type`

private:
    struct Inside;
    boost::shared_ptr<const Inside> inside_;
};

} // namespace Log
} // namespace ZAV
