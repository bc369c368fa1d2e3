#include "Output.h"

#include "Outcome.h"
#include "platform/Terminal.h"
#include "terminal/Paint.h"

namespace ZAV {
namespace Tools {

Output::Output() : isTerminal_(Platform::isTerminal(Platform::STANDARD_OUTPUT)) {
    Platform::prepareStandardOutput();
    pending_.reserve(CAPACITY);
}

void Output::write(std::string_view text) {
    if (!isTerminal_ && !isAnythingPainted()) {
        add(text);
        return;
    }
    shown_.clear();
    while (!text.empty()) {
        const PaintedPiece piece = takePiece(text);
        if (isTerminal_) {
            terminalText_.append(shown_, piece.text);
        } else {
            shown_ += piece.text;
        }
        shown_ += piece.sequence;
    }
    add(shown_);
}

void Output::add(std::string_view text) {
    if (pending_.size() + text.size() > CAPACITY) {
        passOn();
    }
    pending_ += text;
}

void Output::flush() {
    terminalText_.finish(pending_);
    passOn();
}

void Output::passOn() {
    std::string problem;
    const Platform::WriteResult result = Platform::writeStandardOutput(pending_, problem);
    pending_.clear();
    if (result == Platform::WriteResult::NO_READER || result == Platform::WriteResult::STOPPED) {
        throw OutputClosed();
    }
    if (result == Platform::WriteResult::FAILED) {
        throw Failure("cannot write to standard output: " + problem);
    }
}

} // namespace Tools
} // namespace ZAV
