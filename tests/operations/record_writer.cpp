#include "log/LogContext.h"
#include "log/LogManager.h"
#include "log/LogValues.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <cstdio>
#include <iostream>
#include <string>

/// Logs, for each number on standard input, that many records into the series FOLDER/records.log., which
/// rotates when a file has so many bytes as the second argument says; answers with the number of the last
/// record. Each record has as many bytes as the others, two lines and a letter that is not ASCII. With the
/// layout json as the third argument each has pairs as well, and all lines stand in FOLDER/copy, too.
int main(int, char** arguments) {
    ZAV::Util::Properties properties;
    properties["logger.root.level"] = "INFO";
    properties["appender.series"] = "FileAppender";
    properties["appender.series.dir"] = arguments[1];
    properties["appender.series.file"] = "records.log.";
    properties["appender.series.fileNumber"] = "9";
    properties["appender.series.fileMaxSize"] = arguments[2];
    properties["appender.series.fileMaxSizeUnit"] = "B";
    const bool isJson = std::string(arguments[3]) == "json";
    properties["appender.series.layout"] = arguments[3];
    if (isJson) {
        properties["appender.copy"] = "SimpleFileAppender";
        properties["appender.copy.dir"] = arguments[1];
        properties["appender.copy.file"] = "copy";
        properties["appender.copy.layout"] = "json";
    }
    ZAV::Log::LogManager::init(properties);
    const ZAV::Log::LogContext user("user", "\xc3\xbc \\ \"\x01");
    ZAV::Log::Logger& logger = ZAV::Log::LoggerFactory::getLogger("net.tcp");
    int number = 0;
    for (int count = 0; std::cin >> count;) {
        for (int logged = 0; logged < count; ++logged) {
            char digits[16];
            std::snprintf(digits, sizeof digits, "%08d", ++number);
            const std::string text = "record " + std::string(digits) + " \"\xc3\xbc\"\n\tsecond line";
            if (isJson) {
                ZAV_LOGV_INFO(logger, text, "number", number, "third", number / 3.0, "even", number % 2 == 0,
                              "user", "\xe2\x80\xa8");
            } else {
                logger.info(text, 1, "writer.cpp");
            }
        }
        std::cout << number << std::endl;
    }
    ZAV::Log::LogManager::finish();
    return 0;
}
