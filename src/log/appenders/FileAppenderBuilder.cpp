#include "log/appenders/FileAppenderBuilder.h"

#include "log/appenders/FileAppender.h"

#include <locale>
#include <sstream>

namespace ZAV {
namespace Log {

using namespace Util::TimeUtils;

namespace {

/// Reads the number that a text begins with; a number out of range gives the nearest bound.
/// \return false if the text does not begin with a number; `number` is then left as it was
template <typename Number>
bool readNumber(const std::string& text, Number& number) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Number read = 0;
    stream >> read;
    const bool beginsWithNumber = !stream.fail() || read != 0;
    if (beginsWithNumber) {
        number = read;
    }
    return beginsWithNumber;
}

std::uint64_t bytesPer(const std::string& unit) {
    if (unit == "KB") {
        return 1024;
    }
    if (unit == "MB") {
        return std::uint64_t{1024} * 1024;
    }
    return unit == "GB" ? std::uint64_t{1024} * 1024 * 1024 : 1;
}

TimeUnit toTimeUnit(const std::string& unit) {
    if (unit == "h") {
        return HOUR;
    }
    return unit == "d" ? DAY : MIN;
}

} // namespace

FileAppenderBuilder::FileAppenderBuilder(const std::string& name) : AppenderBuilder(name), file_(name) {}

Appender* FileAppenderBuilder::build() {
    return new FileAppender(name_, synchronous_, filters_, dir_, file_, fileNumber_, fileMaxSize_,
                            fileMaxLifetime_);
}

FileAppenderBuilder& FileAppenderBuilder::configure(const Util::Properties& properties) {
    AppenderBuilder::configure(properties);
    getSetting(properties, "dir", dir_);
    getSetting(properties, "file", file_);
    std::string fileNumber;
    if (getSetting(properties, "fileNumber", fileNumber)) {
        readNumber(fileNumber, fileNumber_);
    }
    configureSize(properties);
    configureLifetime(properties);
    return *this;
}

void FileAppenderBuilder::configureSize(const Util::Properties& properties) {
    std::string size;
    std::string unit;
    if (!getSetting(properties, "fileMaxSize", size) || !getSetting(properties, "fileMaxSizeUnit", unit)) {
        return;
    }
    std::uint64_t count = 0;
    if (readNumber(size, count)) {
        fileMaxSize_ = count * bytesPer(unit);
    }
}

/// A lifetime of 0 or below means that age alone never ends a file.
void FileAppenderBuilder::configureLifetime(const Util::Properties& properties) {
    std::string lifetime;
    std::string unit;
    if (!getSetting(properties, "fileMaxLifetime", lifetime) ||
        !getSetting(properties, "fileMaxLifetimeUnit", unit)) {
        return;
    }
    std::int32_t count = 0;
    if (readNumber(lifetime, count)) {
        fileMaxLifetime_ = Time(count > 0 ? static_cast<std::uint64_t>(count) : 0, toTimeUnit(unit));
    }
}

} // namespace Log
} // namespace ZAV
