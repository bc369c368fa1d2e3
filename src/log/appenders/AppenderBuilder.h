#pragma once

#include "log/Appender.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"

#include <string>

namespace ZAV {
namespace Log {

/// Makes one appender of the configuration: reads the keys of its class, and makes the filters and then the
/// appender from their values.
class AppenderBuilder {
public:
    virtual ~AppenderBuilder() = default;
    AppenderBuilder(const AppenderBuilder&) = delete;
    AppenderBuilder& operator=(const AppenderBuilder&) = delete;

    /// \return a new appender, which the caller owns
    virtual Appender* build() = 0;

    /// \throw LogException for a value that is rejected
    virtual AppenderBuilder& configure(const Util::Properties& properties);

protected:
    /// \param reader the bit of `KeyReaders` of the class
    AppenderBuilder(const std::string& name, unsigned reader) : values_(name, reader), reader_(reader) {}

    AppenderValues values_;
    Appender::Filters filters_;

private:
    const unsigned reader_;
};

class StdoutAppenderBuilder : public AppenderBuilder {
public:
    explicit StdoutAppenderBuilder(const std::string& name)
        : AppenderBuilder(name, READ_BY_STDOUT_APPENDER) {}
    Appender* build() override;
};

class FileAppenderBuilder : public AppenderBuilder {
public:
    explicit FileAppenderBuilder(const std::string& name) : AppenderBuilder(name, READ_BY_FILE_APPENDER) {}
    Appender* build() override;
};

class SimpleFileAppenderBuilder : public AppenderBuilder {
public:
    explicit SimpleFileAppenderBuilder(const std::string& name)
        : AppenderBuilder(name, READ_BY_SIMPLE_FILE_APPENDER) {}
    Appender* build() override;
};

class RollingFileAppenderBuilder : public AppenderBuilder {
public:
    explicit RollingFileAppenderBuilder(const std::string& name)
        : AppenderBuilder(name, READ_BY_ROLLING_FILE_APPENDER) {}
    Appender* build() override;
};

} // namespace Log
} // namespace ZAV
