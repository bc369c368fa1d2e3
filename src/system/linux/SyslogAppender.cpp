#include "system/linux/LinuxAppenders.h"

#include "log/LogException.h"
#include "log/LogMessage.h"
#include "platform/CriticalSection.h"
#include "platform/Process.h"
#include "system/VisibleText.h"

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <syslog.h>

namespace ZAV {
namespace Log {

int severityOf(Level::LogLevel level) {
    switch (level) {
    case Level::LEVEL_AUDIT:
        return LOG_NOTICE;
    case Level::LEVEL_ERROR:
        return LOG_ERR;
    case Level::LEVEL_WARNING:
        return LOG_WARNING;
    case Level::LEVEL_INFO:
        return LOG_INFO;
    default:
        return LOG_DEBUG;
    }
}

namespace {

/// The kernel accepts a little more than 200 KB in one datagram. The C library drops a longer line.
constexpr std::size_t LONGEST = 131'072;

/// Access to the C library's `syslog`, whose state is per process.
class SystemLog : public Platform::NeverDestroyed<SystemLog> {
public:
    /// The C library keeps the pointer to the name and uses it from then on, even for the application's own
    /// calls.
    /// \return a copy that is never freed
    const char* keepIdent(const std::string& ident) {
        const Platform::ScopedLock scopedLock(lock_);
        return idents_.insert(ident).first->c_str();
    }

    /// May block on a daemon that does not read, but delays a fork only briefly.
    /// \throw LogException in a child that was forked while another thread was blocked in here: the C library's lock is
    ///        never released there
    void write(const char* ident, int facility, int severity, const char* line) {
        const Platform::ScopedLock scopedLock(lock_);
        if (isInside_) {
            throw LogException("Another thread was in syslog when this process was forked.");
        }
        const Inside inside(*this);
        openlog(ident, LOG_PID, facility);
        const Platform::BlockingIoScope unchanged(lock_);
        syslog(severity, "%s", line);
    }

private:
    /// Marks C library calls as in progress, until they return or a cancellation unwinds them.
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
        false; ///< in a child possibly set by a thread that does not exist there
    std::set<std::string> idents_ ZAV_LOG_GUARDED_BY(lock_);
};

const SystemLog& madeAtLoad = SystemLog::instance();

[[noreturn]] void refuse(const AppenderOptions& options, const char* key, const std::string& value) {
    throw LogException("Wrong value for the " + options.name + "." + key + " property: " + value);
}

/// Daemons take one word before the first "[" or ":" as the name.
std::string identOf(const AppenderOptions& options) {
    const char* const readable = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    const std::string byDefault = program_invocation_short_name; // the C library's default, too
    std::string ident = options.value("ident", byDefault);
    if (ident != byDefault && (ident.empty() || ident.find_first_not_of(readable) != std::string::npos)) {
        refuse(options, "ident", ident);
    }
    return ident;
}

/// `kern` is left out, since it is reserved for the kernel.
int facilityOf(const AppenderOptions& options) {
    static constexpr std::pair<std::string_view, int> FACILITIES[] = {
        {"auth", LOG_AUTH},     {"authpriv", LOG_AUTHPRIV}, {"cron", LOG_CRON},     {"daemon", LOG_DAEMON},
        {"ftp", LOG_FTP},       {"local0", LOG_LOCAL0},     {"local1", LOG_LOCAL1}, {"local2", LOG_LOCAL2},
        {"local3", LOG_LOCAL3}, {"local4", LOG_LOCAL4},     {"local5", LOG_LOCAL5}, {"local6", LOG_LOCAL6},
        {"local7", LOG_LOCAL7}, {"lpr", LOG_LPR},           {"mail", LOG_MAIL},     {"news", LOG_NEWS},
        {"syslog", LOG_SYSLOG}, {"user", LOG_USER},         {"uucp", LOG_UUCP}};
    const std::string name = options.value("facility", "user");
    for (const auto& [known, facility] : FACILITIES) {
        if (known == name) {
            return facility;
        }
    }
    refuse(options, "facility", name);
}

/// Truncates a line that is too long, but not within a UTF-8 character.
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
