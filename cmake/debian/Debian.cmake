# The Debian packages, which scripts/package makes by "cpack -G DEB".
set(debian_version ${PROJECT_VERSION}-1)
set(ZAV_LOG_DEBIAN_MAINTAINER "The ZAV Log authors <maintainers@zav-log.invalid>" CACHE STRING
    "Who answers for the Debian packages: NAME <ADDRESS>")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL runtime development tools)
if(build_system_appenders)
    list(APPEND CPACK_COMPONENTS_ALL system system_development)
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # which would stand before the one of each package
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE zav-log)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ZAV_LOG_DEBIAN_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# Where dpkg-shlibdeps finds the library that the other one is linked with.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzav-log1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Logging library for C++ applications - shared libraries
Named loggers form a tree of dotted names, and a property file decides
which messages each of them lets through and where its lines go: to a
standard stream, to a series of rotated files, or to a single file.

This package holds what programs need that were built with the library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzav-log-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzav-log1 (= ${debian_version}), libboost-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libfmt-dev)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Logging library for C++ applications - headers
Named loggers form a tree of dotted names, and a property file decides
which messages each of them lets through and where its lines go.

This package holds what programs are built with: headers, and files for
the linker, CMake and pkg-config. The header log/LogFormat.h needs
libfmt-dev too.")

# Packages of their own, so that nobody else gets libsystemd.
set(CPACK_DEBIAN_SYSTEM_PACKAGE_NAME libzav-log-system1)
set(CPACK_DEBIAN_SYSTEM_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_SYSTEM_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_SYSTEM_PACKAGE_DEPENDS "libzav-log1 (= ${debian_version})")
set(CPACK_DEBIAN_SYSTEM_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_COMPONENT_SYSTEM_DESCRIPTION "Logging library for C++ applications - logs of the system
Named loggers form a tree of dotted names, and a property file decides
which messages each of them lets through and where its lines go.

This package holds what programs need that send lines to syslog or to
systemd's journal.")

set(CPACK_DEBIAN_SYSTEM_DEVELOPMENT_PACKAGE_NAME libzav-log-system-dev)
set(CPACK_DEBIAN_SYSTEM_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SYSTEM_DEVELOPMENT_PACKAGE_DEPENDS
    "libzav-log-system1 (= ${debian_version}), libzav-log-dev (= ${debian_version})")
set(CPACK_COMPONENT_SYSTEM_DEVELOPMENT_DESCRIPTION
    "Logging library for C++ applications - headers for the logs of the system
Named loggers form a tree of dotted names, and a property file decides
which messages each of them lets through and where its lines go.

This package holds what programs are built with that send lines to syslog
or to systemd's journal.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zav-log-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS lnav)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Command for programs that log with ZAV Log
The command zav-log checks property files, reads several log files and
rotated series as one log, once or as they grow, and steers the logging of
a running program.")

# The licences of others concern those who pass on what holds their code, or is linked with it.
string(REGEX REPLACE "\n *(\n|$)" "\n.\\1" debian_comment "${xxhash_licence}")
string(REPLACE "\n" "\n " debian_comment
    "Comment:\nThe library and the command hold code of the headers of xxHash:\n.\n${debian_comment}")
if(ZAV_LOG_WITH_ICE)
    string(APPEND debian_comment "
 .
 The library is linked with IceUtil, a part of ZeroC Ice (libzeroc-ice), which
 is under the GNU General Public License, version 2. The terms of that licence
 apply to whoever distributes the built library, or a program that uses it; it
 stands in /usr/share/common-licenses/GPL-2.")
endif()
configure_file(cmake/debian/copyright.in ${PROJECT_BINARY_DIR}/debian/copyright @ONLY)

# What only these packages have is added to the folders that they are made of.
configure_file(cmake/debian/AddFiles.cmake.in ${PROJECT_BINARY_DIR}/debian/AddFiles.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/debian/AddFiles.cmake)

# lnav reads formats from /etc, where an administrator may change them.
file(GLOB debian_lnav_formats CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/integrations/lnav
    ${PROJECT_SOURCE_DIR}/integrations/lnav/*.json)
if(debian_lnav_formats)
    list(TRANSFORM debian_lnav_formats REPLACE "(.+)" "/etc/lnav/formats/zav-log/\\1\n" OUTPUT_VARIABLE conffiles)
    string(CONCAT conffiles ${conffiles})
    file(WRITE ${PROJECT_BINARY_DIR}/debian/conffiles "${conffiles}")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/conffiles)
endif()
