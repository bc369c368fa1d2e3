#pragma once

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

/// What the configuration says of one appender of a class that the application has registered by
/// `LogManager::registerAppenderClass`:
///
///     class KafkaAppender : public ZAV::Log::Appender {
///     public:
///         explicit KafkaAppender(const ZAV::Log::AppenderOptions& options)
///             : Appender(options), options_(options), producer_(options.value("brokers", "localhost:9092"))
///             {}
///
///     private:
///         void doOutput(const ZAV::Log::LogMessage& message) override {
///             producer_.send(options_.formatLine(message));
///         }
///         ...
///     };
///
///     ZAV::Log::LogManager::registerAppenderClass("KafkaAppender", [](const ZAV::Log::AppenderOptions&
///     options) {
///         return std::make_unique<KafkaAppender>(options);
///     });
///
/// It can be copied and kept. Any number of threads may use one object, as long as none of them changes its
/// members.
struct ZAV_LOG_API AppenderOptions {
    /// Reads the keys "appender.<name>.*" of a configuration, as `LogManager::init` does. A level that a
    /// command may lower (the keys `level` and `expiration`) listens to commands as long as there is a copy
    /// of the filters, or until `LogManager::finish`.
    /// \throw LogException for a bad level, message type or expiration
    AppenderOptions(const std::string& appenderName, const Util::Properties& properties);
    ~AppenderOptions();
    AppenderOptions(const AppenderOptions& other);
    AppenderOptions& operator=(const AppenderOptions& other);

    /// \return the line of a message, without a line end, as `layout`, `fields` and `escape` say
    std::string formatLine(const LogMessage& message) const;

    /// \param key the end of a key: "brokers" for "appender.<name>.brokers"
    /// \return its value; `byDefault` if the configuration does not have it
    std::string value(const std::string& key, const std::string& byDefault = std::string()) const;

    std::string name;
    bool synchronous;          ///< false if the key `asynchronous` is "true"
    Appender::Filters filters; ///< those of the keys `filters`, `level`, `expiration` and `message_type`

private:
    struct Inside;
    boost::shared_ptr<const Inside> inside_;
};

} // namespace Log
} // namespace ZAV
