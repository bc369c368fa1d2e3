#include "records/TimeStamp.h"

namespace ZAV {
namespace Tools {

namespace {

/// The lowest and the highest character at each position.
constexpr char LEAST[] = "0000.00.00 00:00:00:000000";
constexpr char GREATEST[] = "9999.19.39 29:59:69:999999";

static_assert(sizeof LEAST == TIME_STAMP_LENGTH + 1 && sizeof GREATEST == sizeof LEAST);

/// Checks all positions without a branch, which the compiler turns into a few vector instructions: this runs
/// for every line.
bool hasShapeOfTime(const char* text) {
    unsigned misfits = 0;
    for (std::size_t place = 0; place < TIME_STAMP_LENGTH; ++place) {
        const bool fits = text[place] >= LEAST[place] && text[place] <= GREATEST[place];
        misfits |= static_cast<unsigned>(!fits);
    }
    return misfits == 0;
}

unsigned twoDigits(const char* text) {
    return static_cast<unsigned>((text[0] - '0') * 10 + (text[1] - '0'));
}

bool isOnCalendar(const char* text) {
    const unsigned month = twoDigits(text + 5);
    const unsigned day = twoDigits(text + 8);
    return month >= 1 && month <= 12 && day >= 1 && day <= 31 && twoDigits(text + 11) <= 23 &&
           twoDigits(text + 17) <= 60;
}

bool isEndOfWord(char character) {
    return character == ' ' || character == '\n' || character == '\r';
}

} // namespace

bool startsWithTime(std::string_view line) {
    return line.size() >= TIME_STAMP_LENGTH &&
           (line.size() == TIME_STAMP_LENGTH || isEndOfWord(line[TIME_STAMP_LENGTH])) &&
           hasShapeOfTime(line.data()) && isOnCalendar(line.data());
}

} // namespace Tools
} // namespace ZAV
