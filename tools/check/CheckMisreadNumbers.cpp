#include "check/Checks.h"
#include "log/appenders/FileAppender.h"
#include "log/config/ConfigurationKeys.h"
#include "log/config/ValueReaders.h"
#include "zav-util/Conversions.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace ZAV {
namespace Tools {

namespace {

using Log::ConfigurationKey;
using Log::LeadingNumber;
using Log::ValueForm;

bool isKey(const ConfigurationKey& row, const char* name) {
    return row.name == std::string(name);
}

/// \return what a negative number means; empty if it means what it says, or what the documentation recommends
std::string meaningOfNegative(const ConfigurationKey& row, std::int64_t number) {
    if (row.section == Log::KeySection::DISPATCHER) {
        const bool isUsual = number == -1 || isKey(row, Log::DispatcherOption::PRIORITY);
        const bool isQueue = isKey(row, Log::DispatcherOption::MAX_QUEUE_SIZE);
        return isUsual ? std::string() : isQueue ? "no limit, like -1" : "no waiting, like 0";
    }
    if (row.form == ValueForm::LEADING_SIGNED) {
        return "for ever, like 0";
    }
    const bool isRecovery = row.form == ValueForm::PERIOD && row.requiredKey == nullptr;
    return isRecovery ? "never, like 0" : "a period that is over at once";
}

void warn(Findings& findings, const PropertyLine& line, const std::string& text) {
    findings.addWarning(line, "out-of-range", text);
}

/// \param text the number in the line
void checkSigned(const std::string& text, const PropertyLine& line, const ConfigurationKey& row,
                 Findings& findings) {
    const LeadingNumber<std::int32_t> number = Log::readLeadingSigned(text);
    if (number.isCut) {
        warn(findings, line, text + " counts as " + Util::toString(std::int64_t{number.value}));
    } else if (number.isNumber && number.value < 0) {
        const std::string meaning = meaningOfNegative(row, number.value);
        if (!meaning.empty()) {
            warn(findings, line, text + " counts as " + meaning);
        }
    }
}

void checkWhole(const std::string& text, const PropertyLine& line, const ConfigurationKey& row,
                Findings& findings) {
    if (Log::readLeadingSigned(text).isWhole) {
        checkSigned(text, line, row, findings);
    }
}

void checkUnsigned(const PropertyLine& line, const ConfigurationKey& row, Findings& findings) {
    const LeadingNumber<std::uint64_t> number = Log::readLeadingUnsigned(line.value);
    const bool isFileNumber = isKey(row, Log::AppenderSetting::FILE_NUMBER);
    const bool isNegative = number.value != 0 && line.value.front() == '-';
    if (isFileNumber && number.value > Log::FileAppender::HIGHEST_FILE_NUMBER) {
        warn(findings, line,
             line.value + " counts as " + Util::toString(Log::FileAppender::HIGHEST_FILE_NUMBER));
    } else if (number.isCut) {
        warn(findings, line, line.value + " counts as " + Util::toString(number.value));
    } else if (isNegative) {
        warn(findings, line,
             line.value + " counts as " + Util::toString(number.value) + ", so there is no limit");
    }
}

std::optional<std::uint64_t> readLimit(const std::string& value, ValueForm form) {
    if (form == ValueForm::SIZE_LIMIT || form == ValueForm::BYTE_SIZE) {
        return Log::readSizeLimit(value);
    }
    if (form == ValueForm::COUNT_LIMIT) {
        return Log::readCountLimit(value);
    }
    const auto time = Log::readTimeLimit(value);
    return time ? std::optional<std::uint64_t>(time->microseconds()) : std::nullopt;
}

/// A value that is no limit at all is a finding of its own.
void checkLimit(const PropertyLine& line, const ConfigurationKey& row, Findings& findings) {
    const std::optional<std::uint64_t> limit = readLimit(line.value, row.form);
    const std::string number = Util::split(line.value, ' ').front();
    if (limit == std::numeric_limits<std::uint64_t>::max()) {
        warn(findings, line,
             line.value + " does not fit into 64 bits and counts as the largest number that does");
    } else if (limit && row.form != ValueForm::BYTE_SIZE && number.front() == '-' &&
               Log::readLeadingUnsigned(number).value != 0) {
        warn(findings, line, number + " counts as no limit, like 0");
    }
}

template <typename Number>
void checkEnd(const LeadingNumber<Number>& number, const PropertyLine& line, const ConfigurationKey& row,
              Findings& findings) {
    if (!number.isNumber) {
        findings.addWarning(line, "partly-read",
                            "'" + line.value + "' is no number and counts as the default, " +
                                row.byDefault.text);
    } else if (!number.isWhole) {
        findings.addWarning(line, "partly-read",
                            "only the number at the beginning of '" + line.value + "' counts");
    }
}

void checkNumber(const PropertyLine& line, const ConfigurationKey& row, Findings& findings) {
    switch (row.form) {
    case ValueForm::WHOLE_NUMBER:
        return checkWhole(line.value, line, row, findings);
    case ValueForm::PERIOD:
        return checkWhole(Util::split(line.value, ' ').front(), line, row, findings);
    case ValueForm::LEADING_SIGNED:
        checkEnd(Log::readLeadingSigned(line.value), line, row, findings);
        return checkSigned(line.value, line, row, findings);
    case ValueForm::LEADING_UNSIGNED:
        checkEnd(Log::readLeadingUnsigned(line.value), line, row, findings);
        return checkUnsigned(line, row, findings);
    case ValueForm::SIZE_LIMIT:
    case ValueForm::BYTE_SIZE:
    case ValueForm::TIME_LIMIT:
    case ValueForm::COUNT_LIMIT:
        return checkLimit(line, row, findings);
    default:
        return;
    }
}

/// \return true if the size in bytes does not fit into 64 bits
bool isProductTooLarge(const std::string& size, const std::string& unit) {
    const LeadingNumber<std::uint64_t> count = Log::readLeadingUnsigned(size);
    const std::uint64_t factor = Log::readSizeUnit(unit).value_or(Log::DEFAULT_SIZE_UNIT);
    const bool isNamedAlready = count.isCut || size.front() == '-';
    return !isNamedAlready && count.value > std::numeric_limits<std::uint64_t>::max() / factor;
}

/// Size and unit may each be valid, and their product too large.
void checkProduct(const Configuration& configuration, const DeclaredAppender& appender, Findings& findings) {
    const PropertyLine* const size = configuration.setting(appender, Log::AppenderSetting::FILE_MAX_SIZE);
    const PropertyLine* const unit =
        configuration.setting(appender, Log::AppenderSetting::FILE_MAX_SIZE_UNIT);
    const bool isRead = appender.reader == Log::READ_BY_FILE_APPENDER && size != nullptr && unit != nullptr;
    if (isRead && isProductTooLarge(size->value, unit->value)) {
        findings.addWarning(later(*size, *unit), "out-of-range",
                            "the size " + size->value + ' ' + unit->value +
                                " does not fit into 64 bits of bytes and counts as the largest that does");
    }
}

} // namespace

void checkMisreadNumbers(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        if (const Log::ConfigurationKey* const row = configuration.settingInEffect(line.key)) {
            checkNumber(line, *row, findings);
        }
    }
    for (const DeclaredAppender& appender : configuration.appenders()) {
        checkProduct(configuration, appender, findings);
    }
}

} // namespace Tools
} // namespace ZAV
