# The warnings for this project's own code; they never apply to a user's code.
add_library(zav-log-warnings INTERFACE)
target_compile_options(zav-log-warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${ZAV_LOG_WARNINGS_AS_ERRORS}>:-Werror>)
