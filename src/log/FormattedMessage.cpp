#include "log/FormattedMessage.h"

#include "log/Logger.h"
#include "log/text/FormattedText.h"
#include "log/text/PackedValues.h"
#include "log/tree/LoggerInside.h"

#include <cstring>

namespace ZAV {
namespace Log {

namespace {

void pack(MessageText& text, const TaggedValue* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        TaggedValue value = values[i];
        if (value.kind == TaggedValue::Kind::C_STRING && value.text != nullptr) {
            value.size = std::strlen(value.text);
        }
        text.commit(packValue(text.room(packedSize(value)), value));
    }
}

} // namespace

void FormattedMessage::logTagged(const Logger& logger, const Place& place, const TaggedValue* values,
                                 std::size_t count) {
    const TakenText taken;
    if (logger.inside_->takesValues()) {
        const KnownPlace& known = knownPlace(place);
        if (!known.needsCall) {
            pack(taken.text, values, count);
            logger.inside_->logFrom(known, taken.text.view(), TextForm::FORMATTED);
            return;
        }
    }
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
