#include "config/CustomAppenderClasses.h"

#include "Outcome.h"
#include "log/AppenderOptions.h"
#include "log/LogException.h"
#include "log/LogManager.h"

namespace ZAV {
namespace Tools {

namespace {

class SilentAppender : public Log::Appender {
public:
    using Log::Appender::Appender;

private:
    void doOutput(const Log::LogMessage&) override {}
};

std::set<std::string>& classes() {
    static std::set<std::string> names;
    return names;
}

} // namespace

void CustomAppenderClasses::addTo(CLI::App& command) {
    command.add_option("--class", names_, "A class of appenders that the program registers; may be repeated")
        ->allow_extra_args(false)
        ->type_name("NAME");
}

void CustomAppenderClasses::registerAll() const {
    for (const std::string& name : names_) {
        if (name.empty()) {
            throw UsageError("--class: A class has a name.");
        }
        if (!classes().insert(name).second) {
            continue;
        }
        try {
            Log::LogManager::registerAppenderClass(name, [](const Log::AppenderOptions& options) {
                return std::make_unique<SilentAppender>(options);
            });
        } catch (const Log::LogException& exception) {
            throw UsageError(std::string("--class: ") + exception.what());
        }
    }
}

const std::set<std::string>& CustomAppenderClasses::registered() {
    return classes();
}

} // namespace Tools
} // namespace ZAV
