#pragma once

#include "AcceptanceSupport.h"

#include <sys/wait.h>
#include <unistd.h>

namespace ZAV::TestSupport {

/// An application whose earlier processes have ended badly. They are forked before the library is set up
/// here.
class LeavingProcess : public Application {
protected:
    /// Does something in a process of its own, which then ends at once, with nothing cleared up.
    /// \return how it ended, as `waitpid` tells
    template <typename Function>
    static int inProcess(Function function) {
        const pid_t process = fork();
        if (process == 0) {
            function();
            _exit(0);
        }
        int status = 0;
        waitpid(process, &status, 0);
        return status;
    }

    /// Has a process log texts that nobody delivers, and end.
    void leave(const std::string& lines, const std::vector<std::string>& texts) {
        const int status = inProcess([&] {
            init(lines);
            for (const std::string& text : texts) {
                Log::LoggerFactory::getLogger("net").info(text, 0, "");
            }
        });
        ASSERT_EQ(status, 0);
    }

    /// The properties of one asynchronous appender, and a consumer that comes when it is called.
    static std::string lazy(const std::string& more = "", const std::string& name = "a") {
        return "logger.root.level = INFO\nappender." + name + " = SimpleFileAppender\nappender." + name +
               ".dir = DIR\nappender." + name + ".file = " + name + ".log\nappender." + name +
               ".asynchronous = true\nzav.log.AsynchronousDispatcher.waitingPeriod = 3600\n" + more;
    }
};

} // namespace ZAV::TestSupport
