#include "Output.h"

#include "Outcome.h"
#include "platform/Terminal.h"
#include "terminal/Paint.h"

#include <iostream>

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

namespace {

/// Unbuffered, since `std::cerr` passes on at once what it gets.
class TerminalFilter : public std::streambuf {
public:
    explicit TerminalFilter(std::streambuf& target) : target_(target) {}

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        std::string shown;
        text_.append(shown, std::string_view(text, static_cast<std::size_t>(size)));
        return pass(shown) ? size : 0;
    }

    int_type overflow(int_type character) override {
        const char byte = traits_type::to_char_type(character);
        const bool isNone = traits_type::eq_int_type(character, traits_type::eof());
        return isNone || xsputn(&byte, 1) == 1 ? traits_type::not_eof(character) : traits_type::eof();
    }

    int sync() override { return target_.pubsync(); }

private:
    bool pass(const std::string& shown) {
        const auto size = static_cast<std::streamsize>(shown.size());
        return target_.sputn(shown.data(), size) == size;
    }

    std::streambuf& target_;
    TerminalText text_;
};

} // namespace

TerminalErrors::TerminalErrors() {
    if (Platform::isTerminal(Platform::STANDARD_ERROR)) {
        filter_ = std::make_unique<TerminalFilter>(*std::cerr.rdbuf());
        original_ = std::cerr.rdbuf(filter_.get());
    }
}

TerminalErrors::~TerminalErrors() {
    if (filter_ != nullptr) {
        std::cerr.rdbuf(original_);
    }
}

} // namespace Tools
} // namespace ZAV
