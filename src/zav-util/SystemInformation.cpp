#include "zav-util/SystemInformation.h"

#include "platform/Process.h"
#include "zav-util/FileUtils.h"

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

} // namespace Util
} // namespace ZAV
