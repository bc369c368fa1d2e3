#include "options/VerbatimWords.h"

#include <algorithm>

namespace ZAV {
namespace Tools {
namespace VerbatimWords {

namespace {

constexpr char MARK = '\x01';

bool looksLikeList(const std::string& word) {
    return !word.empty() && word.front() == '[' && word.back() == ']';
}

bool looksMarked(const std::string& word) {
    return !word.empty() && word.front() == MARK;
}

/// \param words with the program's name
/// \return the index of the first word that is an argument for a command's listeners; the number of words if there is
///         none
std::size_t firstArgumentOfCommand(const std::vector<std::string>& words) {
    std::size_t address = 2;
    while (address < words.size() && words[address].compare(0, 2, "--") == 0) {
        const bool hasValue = words[address].find('=') != std::string::npos || words[address] == "--help";
        address += hasValue ? 1 : 2; // all options of ctl take a value
    }
    const bool isCommand = words.size() > address + 1 && words[1] == "ctl" && words[address + 1] == "command";
    return isCommand ? address + 3 : words.size();
}

/// \return the word, with a mark before it, or before the value in "--option=value", if that would be misread
std::string markedWhereMisread(const std::string& word) {
    const bool isOption = word.compare(0, 2, "--") == 0;
    const std::size_t value = isOption ? word.find('=') + 1 : 0; // 0 also without a value
    const std::string text = word.substr(value);
    return looksLikeList(text) || looksMarked(text) ? word.substr(0, value) + MARK + text : word;
}

std::string withoutMark(const std::string& word) {
    return looksMarked(word) ? word.substr(1) : word;
}

} // namespace

std::vector<std::string> marked(int argc, const char* const* argv) {
    const std::vector<std::string> words(argv, argv + argc);
    const std::size_t firstArgument = firstArgumentOfCommand(words);
    std::vector<std::string> result;
    for (std::size_t number = words.size() - 1; number > 0; --number) {
        const std::string& word = words[number];
        result.push_back(number >= firstArgument ? MARK + word : markedWhereMisread(word));
    }
    return result;
}

void acceptMarked(CLI::App& program) {
    for (CLI::App* const command : program.get_subcommands({})) {
        for (CLI::Option* const option : command->get_options()) {
            if (option->get_items_expected_max() > 0) {
                option->transform(withoutMark);
            }
        }
    }
}

} // namespace VerbatimWords
} // namespace Tools
} // namespace ZAV
