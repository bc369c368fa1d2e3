#include "check/Checks.h"
#include "config/InitTrial.h"

namespace ZAV {
namespace Tools {

void checkNames(const Configuration& configuration, Findings& findings) {
    for (const PropertyLine& line : configuration.file().lines()) {
        if (configuration.meaningOf(line.key).kind == KeyMeaning::REFUSED_LOGGER) {
            Util::Properties trial;
            trial[line.key] = line.value;
            findings.addError(line, "bad-name", initError(trial));
        }
    }
}

} // namespace Tools
} // namespace ZAV
