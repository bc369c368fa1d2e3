#pragma once

#include "log/TaggedValue.h"

#include <cstddef>
#include <string_view>

namespace ZAV {
namespace Log {

/// Room for any number in the general form, such as "-1.23457e+308".
constexpr std::size_t GENERAL_FLOAT_SIZE = 16;

/// Writes a number in the general form with six digits, as `printf` does with "%g" in the classic locale.
/// \param text room for `GENERAL_FLOAT_SIZE` characters
/// \return the end of what was written
char* writeGeneralFloat(char* text, double number);

/// Room for any number in the shortest form, such as "-2.2250738585072014e-308".
constexpr std::size_t SHORTEST_FLOAT_SIZE = 24;

/// Writes a number in the shortest form that reads back the same, as `std::to_chars` does.
/// \param text room for `SHORTEST_FLOAT_SIZE` characters
/// \return the end of what was written
char* writeShortestFloat(char* text, double number);
char* writeShortestFloat(char* text, float number);

/// The same without a search for the shortest form, but only for usual numbers of at most six digits.
/// \return the end of what was written; null for any other number
char* writeUsualFloat(char* text, double number);
char* writeUsualFloat(char* text, float number);

/// Room for any value that is no text.
constexpr std::size_t NUMBER_SIZE = 32;

/// Writes a number, a boolean or a character, as pairs show it.
/// \param text room for `NUMBER_SIZE` characters
/// \return the end of what was written
char* writeNumber(char* text, const TaggedValue& value) noexcept;

/// \return whether a value refers to its characters: a text, or a number that is given as text
inline bool isText(const TaggedValue& value) noexcept {
    using Kind = TaggedValue::Kind;
    switch (value.kind) {
    case Kind::TEXT:
    case Kind::C_STRING:
    case Kind::NUMBER:
        return true;
    case Kind::SIGNED:
    case Kind::UNSIGNED:
    case Kind::DOUBLE:
    case Kind::FLOAT:
    case Kind::CHARACTER:
    case Kind::BOOLEAN:
    case Kind::ADDRESS:
        break;
    }
    return false;
}

/// The text of a value, unquoted.
class ValueText {
public:
    /// \param value its text must outlive this object
    explicit ValueText(const TaggedValue& value) noexcept
        : view_(isText(value) ? std::string_view(value.text, value.size) : numberText(value)) {}
    ValueText(const ValueText&) = delete;
    ValueText& operator=(const ValueText&) = delete;

    std::string_view view() const noexcept { return view_; }

private:
    std::string_view numberText(const TaggedValue& value) noexcept {
        return {number_, static_cast<std::size_t>(writeNumber(number_, value) - number_)};
    }

    char number_[NUMBER_SIZE];
    std::string_view view_;
};

} // namespace Log
} // namespace ZAV
