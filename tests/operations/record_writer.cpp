#include "log/LogManager.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <cstdio>
#include <iostream>
#include <string>

/// Logs, for each number on standard input, that many records into the series FOLDER/records.log., which
/// rotates when a file has so many bytes as the second argument says; answers with the number of the last
/// record. Each record has as many bytes as the others, two lines and a letter that is not ASCII.
int main(int, char** arguments) {
    ZAV::Util::Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.series"] = "FileAppender";
    properties["appender.series.dir"] = arguments[1];
    properties["appender.series.file"] = "records.log.";
    properties["appender.series.fileNumber"] = "9";
    properties["appender.series.fileMaxSize"] = arguments[2];
    properties["appender.series.fileMaxSizeUnit"] = "B";
    ZAV::Log::LogManager::init(properties);
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
    int number = 0;
    for (int count = 0; std::cin >> count;) {
        for (int logged = 0; logged < count; ++logged) {
            char digits[16];
            std::snprintf(digits, sizeof digits, "%08d", ++number);
            logger.info("record " + std::string(digits) + " \"\xc3\xbc\"\n\tsecond line", 1, "writer.cpp");
        }
        std::cout << number << std::endl;
    }
    ZAV::Log::LogManager::finish();
    return 0;
}
