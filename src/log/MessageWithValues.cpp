#include "log/MessageWithValues.h"

#include "log/Logger.h"
#include "log/text/MessageText.h"
#include "log/text/PackedPairs.h"
#include "log/tree/LoggerInside.h"

namespace ZAV {
namespace Log {

/// The pairs are packed into the thread's memory, from where they go into the queue or the message.
void MessageWithValues::logTagged(const Logger& logger, const Place& place, std::string_view text,
                                  const TaggedValue* keysAndValues, std::size_t count) {
    const TakenText pairs;
    const TaggedValue* const end = keysAndValues + 2 * count;
    for (const TaggedValue* key = keysAndValues; key != end; key += 2) {
        const std::string_view name(key->text, key->size);
        pairs.text.commit(packPair(pairs.text.room(packedPairSize(name, key[1])), name, key[1]));
    }
    logger.inside_->logFrom(place, text, TextForm::READY, pairs.text.view());
}

} // namespace Log
} // namespace ZAV
