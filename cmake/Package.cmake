# What "cmake --install" installs: headers, the libraries, CMake package files and pkg-config files.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zav-log)

# Installs libraries in one component, and their development files in another.
function(install_libraries export component development)
    install(TARGETS ${ARGN} EXPORT ${export}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${development}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zav-log COMPONENT ${development}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zav-log) # for Meson, which does not support file sets
    install(EXPORT ${export} NAMESPACE zav-log:: DESTINATION ${package_dir} COMPONENT ${development})
endfunction()

file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
function(install_pkgconfig development)
    foreach(library IN LISTS ARGN)
        configure_file(cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
        install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT ${development})
    endforeach()
endfunction()

# Shared and static libraries may be installed in one folder, and so have separate CMake files. Programs have to find
# the static ones' link dependencies; pkg-config prints them with --static.
set(kind "")
set(private_libraries "-Wl,-z,nodelete -lz -pthread")
if(iceutil_library STREQUAL Ice::Ice)
    string(APPEND private_libraries " -lIce")
elseif(iceutil_library)
    string(APPEND private_libraries " -lzav-log-iceutil")
endif()
if(NOT BUILD_SHARED_LIBS)
    set(kind static-)
    set(dependencies "find_dependency(Threads)\nfind_dependency(ZLIB)\n")
    if(iceutil_library STREQUAL Ice::Ice)
        string(APPEND dependencies "find_dependency(Ice COMPONENTS Ice)\n")
    elseif(iceutil_library)
        install_libraries(zav-log-static-targets runtime development zav-log-iceutil)
    endif()
    file(WRITE ${PROJECT_BINARY_DIR}/zav-log-static-dependencies.cmake ${dependencies})
    install(FILES ${PROJECT_BINARY_DIR}/zav-log-static-dependencies.cmake DESTINATION ${package_dir}
        COMPONENT development)
endif()

install_libraries(zav-log-${kind}targets runtime development zav-log-dll zav-log-control)
install_pkgconfig(development zav-log zav-log-control)
if(build_system_appenders)
    install_libraries(zav-log-${kind}system-targets system system_development zav-log-system)
    install_pkgconfig(system_development zav-log-system)
endif()

configure_package_config_file(cmake/zav-log-config.cmake.in ${PROJECT_BINARY_DIR}/zav-log-config.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zav-log-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zav-log-config.cmake ${PROJECT_BINARY_DIR}/zav-log-config-version.cmake
    DESTINATION ${package_dir} COMPONENT development)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${xxhash_licence_file} DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)

if(WIN32)
    install(FILES ${ZAV_LOG_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()

# "cpack" creates one archive with the same content, unless the library is part of another project, which may have
# archives of its own.
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()
if(WIN32)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_NAME zav-log)
set(CPACK_PACKAGE_VENDOR "The ZAV Log authors")
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
