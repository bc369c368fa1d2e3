// What a terminal may be asked to show: any bytes, in pieces of any size. Nothing that it obeys comes
// through, the pieces make no difference, and printable ASCII stays as it is.

#include "Expect.h"

#include "terminal/TerminalText.h"
#include "zav-util/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using namespace ZAV;

namespace {

std::string shownInPieces(std::string_view text, std::size_t size) {
    Tools::TerminalText terminalText;
    std::string shown;
    for (std::size_t begin = 0; begin < text.size(); begin += size) {
        terminalText.append(shown, text.substr(begin, size));
    }
    terminalText.finish(shown);
    return shown;
}

bool isPrintable(char character) {
    return character >= ' ' && character <= '~';
}

void expectHarmless(std::string_view shown) {
    while (!shown.empty()) {
        const Util::CodePoint character = Util::firstCodePoint(shown);
        EXPECT(character.size > 0);
        EXPECT(character.value >= 0x20 || character.value == '\n' || character.value == '\t');
        EXPECT(character.value != 0x7f && !Util::affectsTerminalDisplay(character.value));
        shown.remove_prefix(character.size);
    }
}

} // namespace

/// The first byte is the size of the pieces.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::string shown = shownInPieces(text, text.size() + 1);
    expectHarmless(shown);
    EXPECT(shownInPieces(text, data[0] + 1U) == shown);
    EXPECT(!std::all_of(text.begin(), text.end(), isPrintable) || shown == text);
    return 0;
}
