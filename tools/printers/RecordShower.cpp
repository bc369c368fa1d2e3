#include "printers/RecordShower.h"

namespace ZAV {
namespace Tools {

const std::string& RecordShower::show(std::size_t input, RecordStream& stream) {
    text_.clear();
    printer_.observe(input, stream);
    if (!stream.record().isContinuation) {
        isWanted_[input] = filter_.accepts(stream);
    }
    if (isWanted_[input]) {
        printer_.print(input, stream, text_);
    }
    return text_;
}

const std::string& RecordShower::end() {
    text_.clear();
    printer_.printEnd(text_);
    return text_;
}

} // namespace Tools
} // namespace ZAV
