#pragma once

#include <string>
#include <vector>

namespace ZAV {
namespace Tools {

// Guesses the known word that an unknown one stands for. Words and candidates of more than 1000 bytes are
// skipped, since the time is the product of both lengths.

/// \return the candidate nearest to the word; empty if there are none
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

/// \return the nearest candidate, if it is near enough to have been meant; empty otherwise
std::string nearWord(const std::string& word, const std::vector<std::string>& candidates);

/// Compares dotted keys: each component must be near its counterpart, so that a long common prefix does not
/// make different keys near.
/// \return the nearest key; empty if none is near
std::string nearKey(const std::string& key, const std::vector<std::string>& candidates);

/// \return "; did you mean '...'?" to append to a message; empty for an empty suggestion
std::string question(const std::string& suggestion);

} // namespace Tools
} // namespace ZAV
