#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

// Guesses what somebody meant who wrote a word that nobody knows. A word of more than 1000 bytes is not
// guessed, nor is such a candidate: the time is the product of both lengths.

/// \return the candidate that is most like the word; empty if there is none
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

/// \return the same, if it is so much like the word that it was probably meant; empty otherwise
std::string nearWord(const std::string& word, const std::vector<std::string>& candidates);

/// Compares keys of dotted components: each component must be near its counterpart, so that a long beginning
/// in common does not make different keys near.
/// \return the nearest key; empty if none is near
std::string nearKey(const std::string& key, const std::vector<std::string>& candidates);

/// \return "; did you mean '...'?" to end a text with; empty for an empty suggestion
std::string question(const std::string& suggestion);

} // namespace Tools
} // namespace ZAV
