#include "log/LogManager.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <iostream>
#include <string>

/// Logs, for each number on standard input, that many records into the series whose base name is given, which
/// rotates after every 50 records or so; answers with the number of the last record.
int main(int, char** arguments) {
    const std::string base = arguments[1];
    const std::size_t slash = base.rfind('/');
    ZAV::Util::Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.series"] = "FileAppender";
    properties["appender.series.dir"] = base.substr(0, slash);
    properties["appender.series.file"] = base.substr(slash + 1);
    properties["appender.series.fileNumber"] = "9";
    properties["appender.series.fileMaxSize"] = "3";
    properties["appender.series.fileMaxSizeUnit"] = "KB";
    ZAV::Log::LogManager::init(properties);
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
    int number = 0;
    for (int count = 0; std::cin >> count;) {
        for (int logged = 0; logged < count; ++logged) {
            logger.info("number " + std::to_string(++number), __LINE__, "writer.cpp");
        }
        std::cout << number << std::endl;
    }
    ZAV::Log::LogManager::finish();
    return 0;
}
