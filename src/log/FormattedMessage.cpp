#include "log/FormattedMessage.h"

#include "log/Logger.h"
#include "log/text/FormattedText.h"
#include "log/text/PackedValues.h"
#include "log/tree/LoggerInside.h"

namespace ZAV {
namespace Log {

namespace {

/// On the stack, unless they are long.
class PackedValues {
public:
    PackedValues(const TaggedValue* values, std::size_t count) {
        std::size_t most = 0;
        for (std::size_t i = 0; i < count; ++i) {
            most += packedSize(values[i]);
        }
        bytes_.resize(most);
        end_ = bytes_.data();
        for (std::size_t i = 0; i < count; ++i) {
            end_ = packValue(end_, values[i]);
        }
    }

    std::string_view view() const { return {bytes_.data(), static_cast<std::size_t>(end_ - bytes_.data())}; }

private:
    fmt::memory_buffer bytes_;
    char* end_;
};

} // namespace

void FormattedMessage::logTagged(const Logger& logger, const Place& place, const TaggedValue* values,
                                 std::size_t count) {
    if (logger.inside_->takesValues()) {
        const KnownPlace& known = knownPlace(place);
        if (!known.needsCall) {
            logger.inside_->logFrom(known, PackedValues(values, count).view(), TextForm::FORMATTED);
            return;
        }
    }
    const TakenText taken;
    if (succeeds(logger, place, [&] { appendFormatted(taken.text, place.format, values, count); })) {
        logText(logger, place, taken.text.view());
    }
}

void FormattedMessage::logText(const Logger& logger, const Place& place, std::string_view text) {
    logger.inside_->logFrom(place, text, TextForm::READY);
}

void FormattedMessage::logFailure(const Logger& logger, const Place& place, const char* reason) {
    const TakenText taken;
    showFailure(taken.text, place.format, reason);
    logText(logger, place, taken.text.view());
}

} // namespace Log
} // namespace ZAV
