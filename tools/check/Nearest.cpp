#include "check/Nearest.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <limits>
#include <string_view>

namespace ZAV {
namespace Tools {

namespace {

// The cost of one edit. Replacing a letter costs less than deleting one and inserting another, and changing
// its case next to nothing, so that "k" is "KB" rather than "B", and "kb" is "KB".
constexpr std::size_t CASE_COST = 1;
constexpr std::size_t LETTER_COST = 20;
constexpr std::size_t REPLACEMENT_COST = 30;
constexpr std::size_t FAR = std::numeric_limits<std::size_t>::max();

char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

std::size_t costOfReplacing(char a, char b) {
    if (a == b) {
        return 0;
    }
    return lower(a) == lower(b) ? CASE_COST : REPLACEMENT_COST;
}

/// A guess for a longer word helps nobody, and its cost is the product of both lengths.
constexpr std::size_t LONGEST_GUESSED = 1000;

bool isTooLong(const std::string& word) {
    return word.size() > LONGEST_GUESSED;
}

/// Removes the common prefix and suffix, which most keys have and which cost nothing.
void stripCommonAffixes(std::string_view& a, std::string_view& b) {
    const auto begin = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    a.remove_prefix(static_cast<std::size_t>(begin.first - a.begin()));
    b.remove_prefix(static_cast<std::size_t>(begin.second - b.begin()));
    const auto end = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    a.remove_suffix(static_cast<std::size_t>(end.first - a.rbegin()));
    b.remove_suffix(static_cast<std::size_t>(end.second - b.rbegin()));
}

/// The edit distance, in which swapping two neighbouring characters is one edit.
std::size_t distance(std::string_view from, std::string_view to) {
    stripCommonAffixes(from, to);
    if (from.empty() || to.empty()) {
        return (from.size() + to.size()) * LETTER_COST;
    }
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last;
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); ++j) {
        row[j] = j * LETTER_COST;
    }
    for (std::size_t i = 1; i <= from.size(); ++i) {
        beforeLast = last;
        last = row;
        row[0] = i * LETTER_COST;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            row[j] = std::min({last[j] + LETTER_COST, row[j - 1] + LETTER_COST,
                               last[j - 1] + costOfReplacing(from[i - 1], to[j - 1])});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + LETTER_COST);
            }
        }
    }
    return row[to.size()];
}

bool beginsWith(const std::string& text, const std::string& beginning) {
    return text.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), text.begin(),
                                                         [](char a, char b) { return lower(a) == lower(b); });
}

/// Allows a third of the letters to be wrong, but at least one; "async" is near "asynchronous" as well.
bool isNear(const std::string& word, const std::string& candidate) {
    const std::size_t length = std::max(word.size(), candidate.size());
    const std::size_t limit = std::max(LETTER_COST, LETTER_COST * length / 3);
    const bool isShortForm =
        !word.empty() && !candidate.empty() && (beginsWith(word, candidate) || beginsWith(candidate, word));
    return isShortForm || distance(word, candidate) <= limit + word.size() * CASE_COST;
}

std::vector<std::string> components(const std::string& key) {
    std::vector<std::string> pieces(1);
    for (const char c : key) {
        if (c == '.') {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

bool isNearKey(const std::string& key, const std::string& candidate) {
    const std::vector<std::string> from = components(key);
    const std::vector<std::string> to = components(candidate);
    if (from.size() != to.size()) {
        return distance(key, candidate) <= LETTER_COST; // a dot too many or too few
    }
    return std::equal(from.begin(), from.end(), to.begin(), isNear);
}

template <typename IsNear>
std::string nearestOf(const std::string& word, const std::vector<std::string>& candidates,
                      IsNear isNearEnough) {
    std::string best;
    std::size_t bestDistance = FAR;
    if (isTooLong(word)) {
        return best;
    }
    for (const std::string& candidate : candidates) {
        if (isTooLong(candidate) || !isNearEnough(word, candidate)) {
            continue;
        }
        const std::size_t candidateDistance = distance(word, candidate);
        if (candidateDistance < bestDistance) {
            best = candidate;
            bestDistance = candidateDistance;
        }
    }
    return best;
}

} // namespace

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
    return nearestOf(word, candidates, [](const std::string&, const std::string&) { return true; });
}

std::string nearWord(const std::string& word, const std::vector<std::string>& candidates) {
    return nearestOf(word, candidates, isNear);
}

std::string nearKey(const std::string& key, const std::vector<std::string>& candidates) {
    return nearestOf(key, candidates, isNearKey);
}

std::string question(const std::string& suggestion) {
    return suggestion.empty() ? std::string() : "; did you mean '" + suggestion + "'?";
}

} // namespace Tools
} // namespace ZAV
