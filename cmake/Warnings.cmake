# The warnings that this project's own code is held to; a user's code never sees them.
add_library(zav-log-warnings INTERFACE)
target_compile_options(zav-log-warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${ZAV_LOG_WARNINGS_AS_ERRORS}>:-Werror>)
