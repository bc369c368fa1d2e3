#include "filters/Pattern.h"

#include "Outcome.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

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

} // namespace

struct Pattern::Compiled {
    explicit Compiled(const std::string& expression)
        : code(compile(expression)), context(pcre2_match_context_create(nullptr)),
          data(pcre2_match_data_create_from_pattern(code.get(), nullptr)),
          stack(pcre2_jit_stack_create(FIRST_STACK, LARGEST_STACK, nullptr)) {
        pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE); // without it, matching is merely slower
        pcre2_jit_stack_assign(context.get(), nullptr, stack.get());
    }

    Owner<pcre2_code> code;
    Owner<pcre2_match_context> context;
    Owner<pcre2_match_data> data;
    Owner<pcre2_jit_stack> stack;
};

Pattern::Pattern(const std::string& expression) : compiled_(std::make_unique<Compiled>(expression)) {}

Pattern::~Pattern() = default;

bool Pattern::matches(std::string_view text) {
    const int result = pcre2_match(compiled_->code.get(), reinterpret_cast<PCRE2_SPTR>(text.data()),
                                   text.size(), 0, 0, compiled_->data.get(), compiled_->context.get());
    wasUndecided_ = result < 0 && result != PCRE2_ERROR_NOMATCH;
    if (wasUndecided_) {
        problem_ = describe(result);
    }
    return result != PCRE2_ERROR_NOMATCH;
}

} // namespace Tools
} // namespace ZAV
