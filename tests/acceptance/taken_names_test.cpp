// Macros that other headers and a build with -DDEBUG define for the names of the levels, before any header of
// the library.
#define AUDIT 1
#define ERROR 0
#define WARNING "warning"
#define INFO
#define DEBUG
#define TRACE do_trace()

#include "log/Appender.h"
#include "log/CommandListener.h"
#include "log/ConfigurationMessage.h"
#include "log/Level.h"
#include "log/LogCapture.h"
#include "log/LogContext.h"
#include "log/LogException.h"
#include "log/LogLimits.h"
#include "log/LogLine.h"
#include "log/LogMacros.h"
#include "log/LogManager.h"
#include "log/LogMessage.h"
#include "log/LogValues.h"
#include "log/Logger.h"
#include "log/LoggerFactory.h"
#include "log/MessageFilter.h"
#include "log/MessageType.h"
#include "zav-util/Properties.h"
#include "zav-util/TimeUtils.h"
#include "zav-util/UtilException.h"

#include "TestSupport.h"

using namespace ZAV::Log;

TEST(TakenNames, LeaveTheLevelsAndTheMacrosUsable) {
    Logger& logger = LoggerFactory::getLogger("taken");
    const LogCapture capture(logger);
    ZAV_LOG_AUDIT(logger, "a" << 1);
    ZAV_LOG_ERROR(logger, "e" << 2);
    ZAV_LOG_WARNING(logger, "w" << 3);
    ZAV_LOG_INFO(logger, "i" << 4);
    ZAV_LOGV_DEBUG(logger, "d", "number", 5);
    ZAV_LOG_ONCE(ZAV_LOG_TRACE(logger, "t" << 6));
    std::vector<int> levels;
    for (const LogMessage& message : capture.messages()) {
        levels.push_back(message.getLevel());
    }
    EXPECT_THAT(levels, testing::ElementsAre(ZAV_LOG_LEVEL_AUDIT, ZAV_LOG_LEVEL_ERROR, ZAV_LOG_LEVEL_WARNING,
                                             ZAV_LOG_LEVEL_INFO, ZAV_LOG_LEVEL_DEBUG, ZAV_LOG_LEVEL_TRACE));
    EXPECT_EQ(ERROR, 0); // the other header's macro is unchanged
}
