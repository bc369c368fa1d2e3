# Reads the project's version from log/Version.h, the only place where it is defined.
set(ZAV_LOG_VERSION_NUMBERS "")
foreach(part MAJOR MINOR PATCH)
    file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/../src/log/Version.h line
        REGEX "^#define ZAV_LOG_VERSION_${part} [0-9]+$")
    if(NOT line MATCHES " ([0-9]+)$")
        message(FATAL_ERROR "src/log/Version.h does not define ZAV_LOG_VERSION_${part} as a number")
    endif()
    list(APPEND ZAV_LOG_VERSION_NUMBERS ${CMAKE_MATCH_1})
endforeach()
list(JOIN ZAV_LOG_VERSION_NUMBERS "." ZAV_LOG_VERSION)
# Another version takes effect without a new build folder.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/../src/log/Version.h)
