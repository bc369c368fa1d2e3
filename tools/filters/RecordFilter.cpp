#include "filters/RecordFilter.h"

#include "Outcome.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <cstddef>

namespace ZAV {
namespace Tools {

namespace {

constexpr std::size_t FIRST_STACK = 32 * 1024;
constexpr std::size_t LARGEST_STACK = 8 * 1024 * 1024;

std::string describe(int error) {
    PCRE2_UCHAR text[256] = {};
    pcre2_get_error_message(error, text, sizeof text);
    return reinterpret_cast<const char*>(text);
}

struct Pcre2Deleter {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_jit_stack* stack) const { pcre2_jit_stack_free(stack); }
};

template <typename Object>
using Owner = std::unique_ptr<Object, Pcre2Deleter>;

Owner<pcre2_code> compile(const std::string& expression) {
    const Owner<pcre2_compile_context> context(pcre2_compile_context_create(nullptr));
    pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
    int error = 0;
    PCRE2_SIZE place = 0;
    Owner<pcre2_code> code(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(),
                                         PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C,
                                         &error, &place, context.get()));
    if (!code) {
        throw UsageError("--grep: " + describe(error) + " at character " + std::to_string(place) + " of '" +
                         expression + "'");
    }
    return code;
}

bool isAtOrBelow(std::string_view logger, const std::string& ancestor) {
    const bool begins = logger.substr(0, ancestor.size()) == ancestor;
    return begins && (logger.size() == ancestor.size() || logger[ancestor.size()] == '.');
}

bool has(const RecordPairs* pairs, const std::pair<std::string, std::string>& wanted) {
    return pairs != nullptr && std::any_of(pairs->begin(), pairs->end(), [&wanted](const RecordPair& pair) {
               return pair.key == wanted.first && pair.text == wanted.second;
           });
}

} // namespace

/// A regular expression, in the syntax that Perl and ECMAScript have in common.
class Pattern {
public:
    /// \throw UsageError if the expression is invalid
    explicit Pattern(const std::string& expression)
        : code_(compile(expression)), context_(pcre2_match_context_create(nullptr)),
          data_(pcre2_match_data_create_from_pattern(code_.get(), nullptr)),
          stack_(pcre2_jit_stack_create(FIRST_STACK, LARGEST_STACK, nullptr)) {
        pcre2_jit_compile(code_.get(), PCRE2_JIT_COMPLETE); // without it, matching is merely slower
        pcre2_jit_stack_assign(context_.get(), nullptr, stack_.get());
    }

    /// \param text any bytes; invalid UTF-8 matches nothing
    /// \return true if the expression matches anywhere in the text, or takes too many steps to tell, so that nothing
    ///         wanted is left out
    bool matches(std::string_view text);

    /// \return true if the last text took too many steps
    bool wasUndecided() const { return wasUndecided_; }

    /// \return why some texts could not be decided; empty if all could
    const std::string& problem() const { return problem_; }

private:
    Owner<pcre2_code> code_;
    Owner<pcre2_match_context> context_;
    Owner<pcre2_match_data> data_;
    Owner<pcre2_jit_stack> stack_;
    bool wasUndecided_ = false;
    std::string problem_;
};

bool Pattern::matches(std::string_view text) {
    const int result = pcre2_match(code_.get(), reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0, 0,
                                   data_.get(), context_.get());
    wasUndecided_ = result < 0 && result != PCRE2_ERROR_NOMATCH;
    if (wasUndecided_) {
        problem_ = describe(result);
    }
    return result != PCRE2_ERROR_NOMATCH;
}

RecordFilter::RecordFilter() = default;
RecordFilter::~RecordFilter() = default;
RecordFilter::RecordFilter(RecordFilter&& other) noexcept = default;
RecordFilter& RecordFilter::operator=(RecordFilter&& other) noexcept = default;

void RecordFilter::requirePattern(const std::string& expression) {
    pattern_ = std::make_unique<Pattern>(expression);
}

bool RecordFilter::accepts(RecordStream& stream) const {
    const bool meets = meetsAll(stream);
    return isInverted_ ? !meets || (pattern_ && pattern_->wasUndecided()) : meets;
}

bool RecordFilter::meetsAll(RecordStream& stream) const {
    const Record& record = stream.record();
    if (!meetsTime(stream)) {
        return false;
    }
    if ((type_ || level_) && !(record.hasTime && meetsLevelAndType(stream.fields()))) {
        return false;
    }
    if (!loggers_.empty() && !acceptsLogger(stream.fields().logger)) {
        return false;
    }
    if (!pairs_.empty() && !hasAllPairs(stream.fields())) {
        return false;
    }
    return !pattern_ || pattern_->matches(stream.fields().text);
}

/// A record of unknown type meets neither requirement. A configuration message has the most severe level.
bool RecordFilter::meetsLevelAndType(const Fields& fields) const {
    return fields.isTypeKnown && !(type_ && fields.hasLevel != (*type_ == Log::LOG)) &&
           !(level_ && fields.hasLevel && fields.level < *level_);
}

std::string RecordFilter::problem() const {
    const bool isExact = !pattern_ || pattern_->problem().empty();
    return isExact ? "" : "--grep: " + pattern_->problem() + "; records that may not match are shown too";
}

bool RecordFilter::meetsTime(const RecordStream& stream) const {
    if (!since_ && !until_) {
        return true;
    }
    return stream.record().hasTime && !(since_ && since_->isAfter(stream.clock())) &&
           !(until_ && until_->isBefore(stream.clock()));
}

bool RecordFilter::acceptsLogger(std::string_view logger) const {
    return std::any_of(loggers_.begin(), loggers_.end(), [logger](const std::string& allowed) {
        return allowed == "root" || isAtOrBelow(logger, allowed);
    });
}

bool RecordFilter::hasAllPairs(const Fields& fields) const {
    return std::all_of(pairs_.begin(), pairs_.end(), [&fields](const auto& pair) {
        return has(fields.values, pair) || has(fields.context, pair);
    });
}

} // namespace Tools
} // namespace ZAV
