# Not tried against vcpkg's registry. The address is a placeholder, and vcpkg says which checksum belongs in the place of 0.
vcpkg_download_distfile(archive
    URLS "https://zav-log.invalid/zav-log-${VERSION}.tar.gz"
    FILENAME "zav-log-${VERSION}.tar.gz"
    SHA512 0)
vcpkg_extract_source_archive(source ARCHIVE "${archive}")

vcpkg_check_features(OUT_FEATURE_OPTIONS features
    FEATURES
        system ZAV_LOG_SYSTEM_APPENDERS
        tools ZAV_LOG_BUILD_TOOLS)

# vcpkg itself says by BUILD_SHARED_LIBS which kind of library the triplet wants.
vcpkg_cmake_configure(
    SOURCE_PATH "${source}"
    OPTIONS
        ${features}
        -DZAV_LOG_WITH_ICE=OFF
        -DZAV_LOG_BUILD_EXAMPLES=OFF
        -DZAV_LOG_BUILD_TESTS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/zav-log)
vcpkg_fixup_pkgconfig()
if("tools" IN_LIST FEATURES)
    vcpkg_copy_tools(TOOL_NAMES zav-log AUTO_CLEAN)
endif()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
file(GLOB licences "${CURRENT_PACKAGES_DIR}/share/doc/zav-log/LICENSE*")
vcpkg_install_copyright(FILE_LIST ${licences})
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
