#include "check/Checks.h"
#include "check/MisreadNumber.h"
#include "check/MisreadWord.h"
#include "log/config/ConfigurationKeys.h"

#include <optional>

namespace ZAV {
namespace Tools {

namespace {

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

void checkMisreadValues(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        if (meaning.kind == KeyMeaning::SETTING && configuration.missingPartner(meaning) == nullptr) {
            checkWords(line, *meaning.row, findings);
            checkNumber(line, *meaning.row, findings);
        }
    }
    for (const DeclaredAppender& appender : configuration.appenders()) {
        checkProduct(configuration, appender, findings);
    }
}

} // namespace Tools
} // namespace ZAV
