# A library beside the first one, of whose public interface alone it uses: the shared library zav-log-NAME, and the
# objects zav-log-NAME-objects of which both it and its tests are made. HEADER is the public one.
function(add_further_library name header)
    string(TOUPPER ${name} upper_name)
    set(objects zav-log-${name}-objects)
    add_library(${objects} OBJECT ${ARGN})
    set_target_properties(${objects} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_definitions(${objects} PUBLIC ZAV_LOG_${upper_name}_BUILDING)
    target_include_directories(${objects} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${objects}
        PUBLIC zav-log::zav-log Threads::Threads
        PRIVATE $<BUILD_INTERFACE:zav-log-warnings>)

    set(library zav-log-${name})
    add_library(${library} SHARED)
    add_library(zav-log::${name} ALIAS ${library})
    set_target_properties(${library} PROPERTIES
        EXPORT_NAME ${name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    target_link_libraries(${library}
        PUBLIC zav-log::zav-log
        PRIVATE $<BUILD_INTERFACE:${objects}>)
    target_sources(${library} PUBLIC
        FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${PROJECT_SOURCE_DIR}/src/${header})
    if(WIN32)
        set_target_properties(${library} PROPERTIES PREFIX "")
    else()
        # "-z nodelete" for threads and classes that stay to the end of the process, as in the first library.
        set(exports ${PROJECT_SOURCE_DIR}/src/platform/linux/exports.map)
        target_link_options(${library} PRIVATE
            -Wl,-z,nodelete ${no_undefined} -Wl,--version-script=${exports})
        set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${exports})
    endif()
endfunction()
