#include "records/JsonLine.h"

#include "records/TimeStamp.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

namespace ZAV {
namespace Tools {

namespace {

using Json = nlohmann::json;

/// A member that is stored unchanged.
struct Member {
    std::string_view name;
    std::string StructuredRecord::*place;
};

constexpr Member TEXTS[] = {{"logger", &StructuredRecord::logger},
                            {"file", &StructuredRecord::file},
                            {"program", &StructuredRecord::program},
                            {"host", &StructuredRecord::host},
                            {"text", &StructuredRecord::message}};
constexpr Member NUMBERS[] = {{"line", &StructuredRecord::line},
                              {"thread", &StructuredRecord::thread},
                              {"pid", &StructuredRecord::pid}};

template <std::size_t SIZE>
const Member* findMember(const Member (&members)[SIZE], std::string_view name) {
    for (const Member& member : members) {
        if (member.name == name) {
            return &member;
        }
    }
    return nullptr;
}

/// Receives the parser's events without building an object. A function that returns false ends the parse: a
/// member that the layouts write has a value that they never give it.
class JsonLineReader : public nlohmann::json_sax<Json> {
public:
    /// \return the record; null if a mandatory member is missing
    std::shared_ptr<StructuredRecord> take() {
        const bool isTyped =
            record_->isTypeKnown ? isConfiguration_ != record_->hasLevel : hasSource_ && !record_->hasLevel;
        return hasTime_ && hasText_ && isTyped ? std::move(record_) : nullptr;
    }

    bool null() override { return addOther("null"); }
    bool boolean(bool value) override { return addOther(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { // the parser drops the sign of -0
        return addOther(value == 0 ? "-0" : std::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        const Member* const member = depth_ == 1 ? findMember(NUMBERS, key_) : nullptr;
        if (member != nullptr) {
            (*record_).*(member->place) = std::to_string(value);
            return true;
        }
        return addOther(std::to_string(value));
    }
    bool number_float(number_float_t, const string_t& text) override { return addOther(text); }
    bool binary(binary_t&) override { return false; }

    bool string(string_t& value) override {
        if (depth_ != 1) {
            return addPair(std::move(value), true);
        }
        if (key_ == "time") {
            const std::optional<std::int64_t> time = readIsoTime(value);
            hasTime_ = time.has_value();
            record_->setTime(time.value_or(0));
            return hasTime_;
        }
        if (key_ == "type") {
            record_->isTypeKnown = value == "LOG" || value == "CFG";
            isConfiguration_ = value == "CFG";
            return record_->isTypeKnown;
        }
        if (key_ == "level") {
            return record_->setLevel(value);
        }
        if (const Member* const member = findMember(TEXTS, key_)) {
            (*record_).*(member->place) = std::move(value);
            hasText_ = hasText_ || key_ == "text";
            return true;
        }
        return isFree();
    }

    bool key(string_t& value) override {
        (depth_ == 1 ? key_ : pairKey_) = std::move(value);
        hasSource_ = hasSource_ || (depth_ == 1 && key_ == "source");
        return true;
    }
    bool start_object(std::size_t) override {
        if (depth_++ != 1) {
            return true;
        }
        pairs_ = key_ == "values" ? &record_->values : key_ == "context" ? &record_->context : nullptr;
        return pairs_ != nullptr || isFree();
    }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t) override {
        if (depth_++ != 1) {
            return true;
        }
        pairs_ = nullptr;
        return isFree();
    }
    bool end_array() override { return leave(); }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override { return false; }

private:
    /// \return whether the layouts write no member of that name
    bool isFree() const {
        return findMember(TEXTS, key_) == nullptr && findMember(NUMBERS, key_) == nullptr && key_ != "time" &&
               key_ != "type" && key_ != "level" && key_ != "values" && key_ != "context";
    }

    bool addOther(std::string text) { return depth_ == 1 ? isFree() : addPair(std::move(text), false); }

    /// What is nested deeper than the pairs of the layouts is ignored.
    bool addPair(std::string text, bool isText) {
        if (depth_ == 2 && pairs_ != nullptr) {
            pairs_->push_back({pairKey_, std::move(text), isText});
        }
        return true;
    }

    bool leave() {
        --depth_;
        return true;
    }

    std::shared_ptr<StructuredRecord> record_ = std::make_shared<StructuredRecord>();
    std::string key_;              ///< of the current member of the line
    std::string pairKey_;          ///< of the current member within that one
    RecordPairs* pairs_ = nullptr; ///< where the member's pairs go; null if it has none
    std::size_t depth_ = 0;        ///< of objects and arrays that are open
    bool hasTime_ = false;
    bool hasText_ = false;
    bool hasSource_ = false; ///< `--json` adds it, even if it knows no type
    bool isConfiguration_ = false;
};

} // namespace

std::shared_ptr<StructuredRecord> readJsonLine(std::string_view line) {
    JsonLineReader reader;
    if (line.empty() || line.front() != '{' || !Json::sax_parse(line.begin(), line.end(), &reader)) {
        return nullptr;
    }
    std::shared_ptr<StructuredRecord> record = reader.take();
    if (record != nullptr) {
        record->show();
    }
    return record;
}

} // namespace Tools
} // namespace ZAV
