# Defines the target zav-log-pcre2: PCRE2, which has no CMake package files in Debian.
find_path(PCRE2_INCLUDE_DIR pcre2.h REQUIRED)
find_library(PCRE2_LIBRARY pcre2-8 REQUIRED)

add_library(zav-log-pcre2 INTERFACE)
target_include_directories(zav-log-pcre2 SYSTEM INTERFACE ${PCRE2_INCLUDE_DIR})
target_link_libraries(zav-log-pcre2 INTERFACE ${PCRE2_LIBRARY})
if(WIN32)
    target_compile_definitions(zav-log-pcre2 INTERFACE PCRE2_STATIC)
endif()
