#include "log/appenders/FileAppenderBuilder.h"

#include "log/appenders/FileAppender.h"
#include "log/config/AppenderSettings.h"
#include "log/config/KeyNames.h"
#include "log/config/ValueReaders.h"

#include <limits>

namespace ZAV {
namespace Log {

using namespace Util::TimeUtils;

namespace {

/// \return the bytes of a size; the largest number if it is more than that, since no limit is nearer
std::uint64_t bytesOf(std::uint64_t count, std::uint64_t unit) {
    constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
    return count > LARGEST / unit ? LARGEST : count * unit;
}

} // namespace

FileAppenderBuilder::FileAppenderBuilder(const std::string& name) : AppenderBuilder(name), file_(name) {}

Appender* FileAppenderBuilder::build() {
    return new FileAppender(name_, synchronous_, filters_, dir_, file_, fileNumber_, fileMaxSize_,
                            fileMaxLifetime_, options_);
}

FileAppenderBuilder& FileAppenderBuilder::configure(const Util::Properties& properties) {
    AppenderBuilder::configure(properties);
    const AppenderSettings settings(name_, properties);
    settings.get(AppenderSetting::DIR, dir_);
    settings.get(AppenderSetting::FILE_NAME, file_);
    std::string fileNumber;
    if (settings.get(AppenderSetting::FILE_NUMBER, fileNumber)) {
        const LeadingNumber<std::uint64_t> number = readLeadingUnsigned(fileNumber);
        fileNumber_ = number.isNumber ? number.value : fileNumber_;
    }
    configureSize(settings);
    configureLifetime(settings);
    options_.read(settings);
    return *this;
}

void FileAppenderBuilder::configureSize(const AppenderSettings& settings) {
    std::string size;
    std::string unit;
    if (!settings.get(AppenderSetting::FILE_MAX_SIZE, size) ||
        !settings.get(AppenderSetting::FILE_MAX_SIZE_UNIT, unit)) {
        return;
    }
    const LeadingNumber<std::uint64_t> count = readLeadingUnsigned(size);
    if (count.isNumber) {
        fileMaxSize_ = bytesOf(count.value, readSizeUnit(unit).value_or(DEFAULT_SIZE_UNIT));
    }
}

/// A lifetime of 0 or below means that age alone never ends a file.
void FileAppenderBuilder::configureLifetime(const AppenderSettings& settings) {
    std::string lifetime;
    std::string unit;
    if (!settings.get(AppenderSetting::FILE_MAX_LIFETIME, lifetime) ||
        !settings.get(AppenderSetting::FILE_MAX_LIFETIME_UNIT, unit)) {
        return;
    }
    const LeadingNumber<std::int32_t> count = readLeadingSigned(lifetime);
    if (count.isNumber) {
        fileMaxLifetime_ = Time(count.value > 0 ? static_cast<std::uint64_t>(count.value) : 0,
                                readLifetimeUnit(unit).value_or(DEFAULT_LIFETIME_UNIT));
    }
}

} // namespace Log
} // namespace ZAV
