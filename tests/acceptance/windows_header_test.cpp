// The system's header comes first: it defines ERROR and other names.
#include <windows.h>

#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LoggerFactory.h"
#include "zav-util/Properties.h"

#include <gtest/gtest.h>

TEST(WindowsHeader, LeavesTheLevelsAndTheMacrosUsable) {
    using namespace ZAV::Log;
    Logger& logger = LoggerFactory::getLogger("windows-header");
    logger.setLevel(Level::LEVEL_ERROR, false);
    ZAV_LOG_ERROR(logger, "reaches no appender");
    EXPECT_EQ(logger.getLevel(), 50);
    EXPECT_EQ(ERROR, 0);
}
