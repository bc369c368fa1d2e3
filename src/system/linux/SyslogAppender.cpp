#include "system/linux/SyslogAppender.h"

#include "log/LogException.h"
#include "log/LogMessage.h"
#include "platform/CriticalSection.h"
#include "platform/NeverDestroyed.h"
#include "system/VisibleText.h"
#include "system/linux/Severity.h"

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <syslog.h>

namespace ZAV {
namespace Log {

namespace {

/// What the kernel takes in one piece is a little more than 200 KB. The C library loses what is longer.
constexpr std::size_t LONGEST = 131'072;

/// The use of the C library's `syslog`, of which each process has one.
class SystemLog : public Platform::NeverDestroyed<SystemLog> {
public:
    /// The C library remembers where a name stands and uses it for ever, also for the application's own
    /// calls.
    /// \return a copy that stays
    const char* keepIdent(const std::string& ident) {
        const Platform::ScopedLock scopedLock(lock_);
        return idents_.insert(ident).first->c_str();
    }

    /// A daemon that does not read may keep it waiting, but no fork beyond a moment.
    /// \throw LogException in a child that was forked while another thread was in here for long: the lock
    ///        inside the C library is never free there
    void write(const char* ident, int facility, int severity, const char* line) {
        const Platform::ScopedLock scopedLock(lock_);
        if (isInside_) {
            throw LogException("Another thread was in syslog when this process was forked.");
        }
        const Inside inside(*this);
        openlog(ident, LOG_PID, facility);
        const Platform::UnchangedInScope unchanged(lock_);
        syslog(severity, "%s", line);
    }

private:
    /// The calls of the C library, which end the thread if it is cancelled.
    class Inside {
    public:
        explicit Inside(SystemLog& log) ZAV_LOG_REQUIRES(log.lock_) : isInside_(log.isInside_) {
            isInside_ = true;
        }
        ~Inside() { isInside_ = false; }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

    private:
        bool& isInside_;
    };

    friend NeverDestroyed;
    SystemLog() = default;

    Platform::CriticalSection lock_{Platform::AWAITED_BY_FORK};
    bool isInside_ ZAV_LOG_GUARDED_BY(lock_) =
        false; ///< as a child finds it, also for a thread that is not there
    std::set<std::string> idents_ ZAV_LOG_GUARDED_BY(lock_);
};

const SystemLog& madeAtLoad = SystemLog::instance();

[[noreturn]] void refuse(const AppenderOptions& options, const char* key, const std::string& value) {
    throw LogException("Wrong value for the " + options.name + "." + key + " property: " + value);
}

/// A daemon takes the name for what stands before the first "[" or ":", in one word.
std::string identOf(const AppenderOptions& options) {
    const char* const readable = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    const std::string byDefault = program_invocation_short_name; // the C library's, too
    std::string ident = options.value("ident", byDefault);
    if (ident != byDefault && (ident.empty() || ident.find_first_not_of(readable) != std::string::npos)) {
        refuse(options, "ident", ident);
    }
    return ident;
}

/// Without `kern`, which is the kernel's own.
int facilityOf(const AppenderOptions& options) {
    static const std::map<std::string, int> facilities = {
        {"auth", LOG_AUTH},     {"authpriv", LOG_AUTHPRIV}, {"cron", LOG_CRON},     {"daemon", LOG_DAEMON},
        {"ftp", LOG_FTP},       {"local0", LOG_LOCAL0},     {"local1", LOG_LOCAL1}, {"local2", LOG_LOCAL2},
        {"local3", LOG_LOCAL3}, {"local4", LOG_LOCAL4},     {"local5", LOG_LOCAL5}, {"local6", LOG_LOCAL6},
        {"local7", LOG_LOCAL7}, {"lpr", LOG_LPR},           {"mail", LOG_MAIL},     {"news", LOG_NEWS},
        {"syslog", LOG_SYSLOG}, {"user", LOG_USER},         {"uucp", LOG_UUCP}};
    const std::string name = options.value("facility", "user");
    const auto facility = facilities.find(name);
    if (facility == facilities.end()) {
        refuse(options, "facility", name);
    }
    return facility->second;
}

/// Cuts a line that is too long, not within a character of UTF-8.
void cut(std::string& line) {
    if (line.size() > LONGEST) {
        std::size_t size = LONGEST;
        while (size > 0 && (static_cast<unsigned char>(line[size]) & 0xc0U) == 0x80U) {
            --size;
        }
        line.resize(size);
    }
}

} // namespace

SyslogAppender::SyslogAppender(const AppenderOptions& options)
    : Appender(options), options_(options), ident_(SystemLog::instance().keepIdent(identOf(options))),
      facility_(facilityOf(options)) {}

void SyslogAppender::doOutput(const LogMessage& message) {
    std::string line = withVisibleNul(options_.formatLine(message));
    cut(line);
    SystemLog::instance().write(ident_, facility_, severityOf(message.getLevel()), line.c_str());
}

} // namespace Log
} // namespace ZAV
