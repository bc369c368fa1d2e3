#pragma once

#include "log/Appender.h"
#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/appenders/FileAppender.h"
#include "log/appenders/RollingFileAppender.h"
#include "log/appenders/SimpleFileAppender.h"
#include "log/appenders/StdoutAppender.h"
#include "log/config/AppenderValues.h"
#include "log/config/ConfigurationKeys.h"
#include "log/filters/MessageFilters.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ZAV {
namespace Log {

/// Creates appenders of one class, as named in the configuration.
class AbstractAppenderFactory {
public:
    /// \return a new appender, which the caller owns
    /// \throw LogException for an invalid setting
    virtual Appender* create(const Util::Properties& properties, const std::string& appenderName) = 0;

    virtual ~AbstractAppenderFactory() = default;
};

/// Creates appenders with a builder derived from `AppenderBuilder`.
template <typename Builder>
class DefaultAppenderFactory : public AbstractAppenderFactory {
public:
    Appender* create(const Util::Properties& properties, const std::string& appenderName) override {
        Builder builder(appenderName);
        return builder.configure(properties).build();
    }
};

/// Creates appenders of a class registered by the application.
class RegisteredClassFactory : public AbstractAppenderFactory {
public:
    using Maker = std::function<std::unique_ptr<Appender>(const AppenderOptions&)>;

    RegisteredClassFactory(const std::string& className, Maker maker)
        : className_(className), maker_(std::move(maker)) {}

    /// \throw whatever the maker throws
    Appender* create(const Util::Properties& properties, const std::string& appenderName) override {
        std::unique_ptr<Appender> made = maker_(AppenderOptions(appenderName, properties));
        if (made == nullptr) {
            throw LogException("Appender class " + className_ + " made no appender.");
        }
        return made.release();
    }

private:
    const std::string className_;
    const Maker maker_;
};

/// Builds one appender of the configuration: reads the keys of its class, and creates first the filters and
/// then the appender from their values.
class AppenderBuilder {
public:
    virtual ~AppenderBuilder() = default;
    AppenderBuilder(const AppenderBuilder&) = delete;
    AppenderBuilder& operator=(const AppenderBuilder&) = delete;

    /// \return a new appender, which the caller owns
    virtual Appender* build() = 0;

    /// \throw LogException for a value that is rejected
    AppenderBuilder& configure(const Util::Properties& properties) {
        values_ = AppenderValues(values_.name, reader_, properties);
        filters_ = makeFilters(values_);
        return *this;
    }

protected:
    /// \param reader the bit of `KeyReaders` of the class
    AppenderBuilder(const std::string& name, unsigned reader) : values_(name, reader), reader_(reader) {}

    AppenderValues values_;
    Appender::Filters filters_;

private:
    const unsigned reader_;
};

/// Builds appenders of one class.
template <typename Built, unsigned READER>
class BuilderOf : public AppenderBuilder {
public:
    explicit BuilderOf(const std::string& name) : AppenderBuilder(name, READER) {}

    Appender* build() override { return new Built(values_, filters_); }
};

using StdoutAppenderBuilder = BuilderOf<StdoutAppender, READ_BY_STDOUT_APPENDER>;
using FileAppenderBuilder = BuilderOf<FileAppender, READ_BY_FILE_APPENDER>;
using SimpleFileAppenderBuilder = BuilderOf<SimpleFileAppender, READ_BY_SIMPLE_FILE_APPENDER>;
using RollingFileAppenderBuilder = BuilderOf<RollingFileAppender, READ_BY_ROLLING_FILE_APPENDER>;

} // namespace Log
} // namespace ZAV
