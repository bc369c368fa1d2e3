#include "zav-util/ProcessUtils.h"

#include "platform/Process.h"
#include "platform/Terminal.h"
#include "zav-util/FileUtils.h"

#include <iostream>

namespace ZAV {
namespace Util {

std::string getHostName() {
    std::string name = "UNKNOWN";
    Platform::readHostName(name);
    return name.substr(0, name.find('.'));
}

std::string getProgramName() {
    return FileUtils::baseName(Platform::executablePath());
}

void writeErrorLine(std::string_view begin, std::string_view rest) noexcept {
    try {
        std::string text(begin);
        text.append(rest).append(1, '\n');
        Platform::writeToStream(std::cerr, text);
    } catch (...) {
        return;
    }
}

} // namespace Util
} // namespace ZAV
