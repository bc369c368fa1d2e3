#include "check/Checker.h"

#include "check/Checks.h"
#include "zav-util/UtilException.h"

namespace ZAV {
namespace Tools {

namespace {

void checkGrammar(const PropertyFile& file, Findings& findings) {
    for (const RejectedLine& line : file.rejectedLines()) {
        findings.add({line.number, Finding::AN_ERROR, "grammar", line.key, line.problem});
    }
}

void checkAll(const std::string& fileName, QueueFilesOfOthers& queueFiles, Findings& findings) {
    const PropertyFile file(fileName);
    checkGrammar(file, findings);
    const Configuration configuration(file);
    checkNames(configuration, findings);
    checkKeys(configuration, findings);
    checkRejectedValues(configuration, findings);
    checkMisreadWords(configuration, findings);
    checkMisreadNumbers(configuration, findings);
    checkQueue(configuration, fileName, queueFiles, findings);
    checkFiles(configuration, findings);
    checkFilters(configuration, findings);
}

} // namespace

std::vector<Finding> Checker::check(const std::string& fileName) {
    Findings findings;
    try {
        checkAll(fileName, queueFiles_, findings);
    } catch (const Util::UtilException& exception) {
        findings.add({0, Finding::AN_ERROR, "unreadable", std::string(), exception.what()});
    }
    return findings.inOrder();
}

} // namespace Tools
} // namespace ZAV
