#include "check/Checks.h"
#include "check/KeyTable.h"
#include "check/Nearest.h"
#include "config/InitTrial.h"
#include "log/config/KeyNames.h"

namespace ZAV {
namespace Tools {

namespace {

/// \param question ends in a question mark or is empty
std::string before(const std::string& question, const std::string& complaint) {
    return question.empty() ? complaint : question + ' ' + complaint;
}

void checkClass(const Configuration& configuration, const DeclaredAppender& appender, Findings& findings) {
    const PropertyLine* const line = configuration.file().find(Log::appenderKey(appender.name));
    Util::Properties trial;
    trial[appender.declaration->key] = appender.declaration->value;
    std::string hint = "the class is looked for at '" + Log::appenderKey(appender.name) + "':";
    if (line != nullptr) {
        trial[line->key] = line->value;
        hint = "did you mean '" + nearest(appender.className, appenderClasses()) + "'?";
    }
    findings.addError(line != nullptr ? *line : *appender.declaration, "unknown-class",
                      before(hint, complaintOfInit(trial)));
}

} // namespace

void checkDeclarations(const Configuration& configuration, Findings& findings) {
    for (const DeclaredAppender& appender : configuration.appenders()) {
        if (appender.reader == 0) {
            checkClass(configuration, appender, findings);
        }
    }
    for (const PropertyLine& line : configuration.file().lines()) {
        const KeyMeaning meaning = configuration.meaningOf(line.key);
        if (meaning.kind != KeyMeaning::DECLARATION) {
            continue;
        }
        const PropertyLine& first = *configuration.findAppender(meaning.owner)->declaration;
        if (first.number != line.number) {
            Util::Properties trial;
            trial[Log::appenderKey(meaning.owner)] = Log::AppenderClass::STDOUT;
            trial[first.key] = Log::AppenderClass::STDOUT;
            trial[line.key] = Log::AppenderClass::STDOUT;
            findings.addError(line, "duplicate-appender",
                              "'" + first.key + "' declares it too: " + complaintOfInit(trial));
        }
    }
}

} // namespace Tools
} // namespace ZAV
