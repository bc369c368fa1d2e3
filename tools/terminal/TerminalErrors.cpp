#include "terminal/TerminalErrors.h"

#include "platform/Terminal.h"
#include "terminal/TerminalText.h"

#include <iostream>
#include <string>

namespace ZAV {
namespace Tools {

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
