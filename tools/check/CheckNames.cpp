#include "check/Checks.h"
#include "check/Nearest.h"
#include "config/InitTrial.h"
#include "log/config/ConfigurationKeys.h"

namespace ZAV {
namespace Tools {

namespace {

void checkClass(const Configuration& configuration, const DeclaredAppender& appender, Findings& findings) {
    const std::string key = Log::appenderKey(appender.name);
    const PropertyLine* const line = configuration.file().find(key);
    const PropertyLine& place = line != nullptr ? *line : *appender.declaration;
    const std::string meant = line != nullptr ? nearest(appender.className, appenderClasses()) : key;
    Util::Properties trial;
    trial[place.key] = place.value;
    const std::string guess = meant.empty() ? meant : "did you mean '" + meant + "'? ";
    findings.addError(place, "unknown-class", guess + initError(trial));
}

void checkThatItIsFirst(const PropertyLine& line, const DeclaredAppender& appender, Findings& findings) {
    const PropertyLine& first = *appender.declaration;
    if (first.number != line.number) {
        Util::Properties trial;
        trial[Log::appenderKey(appender.name)] = Log::AppenderClass::STDOUT;
        trial[first.key] = Log::AppenderClass::STDOUT;
        trial[line.key] = Log::AppenderClass::STDOUT;
        findings.addError(line, "duplicate-appender",
                          "'" + first.key + "' declares it too: " + initError(trial));
    }
}

void addRefusedLogger(const PropertyLine& line, Findings& findings) {
    Util::Properties trial;
    trial[line.key] = line.value;
    findings.addError(line, "bad-name", initError(trial));
}

} // namespace

void checkNames(const Configuration& configuration, Findings& findings) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        if (appender.reader == 0) {
            checkClass(configuration, appender, findings);
        }
    }
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        if (meaning.kind == KeyMeaning::DECLARATION) {
            checkThatItIsFirst(line, *configuration.findAppender(meaning.owner), findings);
        } else if (meaning.kind == KeyMeaning::REFUSED_LOGGER) {
            addRefusedLogger(line, findings);
        }
    }
}

} // namespace Tools
} // namespace ZAV
