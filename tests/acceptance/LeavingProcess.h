#pragma once

#include "AcceptanceSupport.h"

#include <sys/wait.h>
#include <unistd.h>

namespace ZAV::TestSupport {

/// An application whose earlier processes ended abnormally. They are forked before the library is initialised
/// here.
class LeavingProcess : public Application {
protected:
    /// Runs a function in a child process, which then ends at once, without any cleanup.
    /// \return its status as reported by `waitpid`
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

    /// Has a child process log texts that are not delivered, and end.
    void leave(const std::string& lines, const std::vector<std::string>& texts) {
        const int status = inProcess([&] {
            init(lines);
            for (const std::string& text : texts) {
                Log::LoggerFactory::getLogger("net").info(text, 0, "");
            }
        });
        ASSERT_EQ(status, 0);
    }

    /// The properties of one asynchronous appender, and of a consumer that runs only on request.
    static std::string lazy(const std::string& more = "", const std::string& name = "a") {
        return "logger.root.level = INFO\nappender." + name + " = SimpleFileAppender\nappender." + name +
               ".dir = DIR\nappender." + name + ".file = " + name + ".log\nappender." + name +
               ".asynchronous = true\nzav.log.AsynchronousDispatcher.waitingPeriod = 3600\n" + more;
    }
};

} // namespace ZAV::TestSupport
