# A further library, which uses only the first one's public interface: the library zav-log-NAME, and the objects
# zav-log-NAME-objects, which both it and its tests link. HEADER is the public one.
# usage: add_further_library(NAME HEADER SOURCE... [SHARED_WITH_FIRST SOURCE...])
# SHARED_WITH_FIRST are sources that the first library contains as well: a shared library does not export them, so this
# one needs its own copies; a static one already has them.
function(add_further_library name header)
    cmake_parse_arguments(PARSE_ARGV 2 further "" "" SHARED_WITH_FIRST)
    string(TOUPPER ${name} upper_name)
    set(objects zav-log-${name}-objects)
    add_library(${objects} OBJECT ${further_UNPARSED_ARGUMENTS})
    if(BUILD_SHARED_LIBS)
        target_sources(${objects} PRIVATE ${further_SHARED_WITH_FIRST})
    endif()
    set_target_properties(${objects} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_definitions(${objects} PUBLIC ZAV_LOG_${upper_name}_BUILDING)
    target_include_directories(${objects} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${objects}
        PUBLIC zav-log::zav-log Threads::Threads
        PRIVATE $<BUILD_INTERFACE:zav-log-warnings>)

    set(library zav-log-${name})
    add_library(${library})
    add_library(zav-log::${name} ALIAS ${library})
    set_library_kind(${library} ${name})
    target_link_libraries(${library}
        PUBLIC zav-log::zav-log
        PRIVATE $<BUILD_INTERFACE:${objects}>)
    target_sources(${library} PUBLIC
        FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${PROJECT_SOURCE_DIR}/src/${header})
endfunction()
