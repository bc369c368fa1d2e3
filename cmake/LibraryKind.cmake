# Common settings of the libraries as shared ones, or as static ones with -DBUILD_SHARED_LIBS=OFF.

# A shared library must have no undefined symbols, except those of clang's sanitizers, which are only in the program.
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set(no_undefined)
else()
    set(no_undefined -Wl,--no-undefined)
endif()

# The options that say for which processor the compiler is to link.
string(REGEX MATCHALL "-m32|-m64|-mabi=[^ ]+" compiler_target "${CMAKE_CXX_COMPILER_ARG1} ${CMAKE_CXX_FLAGS}")
if(CMAKE_CXX_COMPILER_TARGET)
    list(APPEND compiler_target --target=${CMAKE_CXX_COMPILER_TARGET})
endif()

# usage: set_library_kind(LIBRARY EXPORT_NAME), for a library that add_library has made without naming a kind
function(set_library_kind library name)
    set_target_properties(${library} PROPERTIES
        EXPORT_NAME ${name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    if(WIN32 AND BUILD_SHARED_LIBS)
        set_target_properties(${library} PROPERTIES PREFIX "")
    elseif(WIN32)
        target_compile_definitions(${library} PUBLIC ZAV_LOG_STATIC)
    elseif(BUILD_SHARED_LIBS)
        # "-z nodelete": a thread of the application that still logs, or one of the library's, must not lose the code
        # that it is running when the library is unloaded.
        set(exports ${PROJECT_SOURCE_DIR}/src/platform/linux/exports.map)
        target_link_options(${library} PRIVATE -Wl,-z,nodelete ${no_undefined} -Wl,--version-script=${exports})
        set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${exports})
    else()
        # The same for anyone's shared library that this one is linked into.
        target_link_options(${library} INTERFACE -Wl,-z,nodelete)
        # The archive holds one object, so that static objects are initialised in the order of the sources, as in a
        # shared library, and not in the order in which the linker needs the parts. They are initialised before the
        # program's own, which may log when they are destroyed: the end of the process must reach the dispatcher after
        # them.
        set(whole $<TARGET_FILE:${library}>.o)
        add_custom_command(TARGET ${library} POST_BUILD
            COMMAND ${CMAKE_CXX_COMPILER} ${compiler_target} -nostdlib -r -o ${whole}
                -Wl,--whole-archive $<TARGET_FILE:${library}> -Wl,--no-whole-archive
            COMMAND ${CMAKE_OBJCOPY} --rename-section .init_array=.init_array.00200 ${whole}
            COMMAND ${CMAKE_COMMAND} -E rm $<TARGET_FILE:${library}>
            COMMAND ${CMAKE_AR} qcs $<TARGET_FILE:${library}> ${whole}
            COMMAND ${CMAKE_COMMAND} -E rm ${whole}
            VERBATIM)
    endif()
endfunction()
