# Sourced by scripts/test-windows.

# Gets what the build for Windows needs from elsewhere into build/windows-dependencies. That leads to a folder
# which outlives the build folder, so that it is filled only once:
#   ice           the sources of IceUtil
#   googletest    GoogleTest, built for Windows
#   pcre2         PCRE2, built for Windows
#   boost, fmt    headers, which are the same on all systems
#   headers       libraries that are headers alone, with their CMake package files
provide_windows_dependencies() {
    local compiler_version cache
    compiler_version=$(x86_64-w64-mingw32-g++-posix -dumpversion)
    cache=${XDG_CACHE_HOME:-$HOME/.cache}/zav-log/windows-$compiler_version
    mkdir -p "$cache/boost/include" "$cache/headers/include" "$cache/headers/share/cmake" "$cache/fmt/include" "$root/build"
    provide "$cache/ice" get-ice-sources
    provide "$cache/googletest" build-googletest mingw-w64.cmake
    provide "$cache/pcre2" build-pcre2
    ln -sfn /usr/include/boost "$cache/boost/include/boost"
    ln -sfn /usr/include/fmt "$cache/fmt/include/fmt"
    ln -sfn /usr/include/CLI /usr/include/nlohmann /usr/include/xxhash.h "$cache/headers/include"
    ln -sfn /usr/share/cmake/CLI11 /usr/share/cmake/nlohmann_json "$cache/headers/share/cmake"
    ln -sfn "$cache" "$root/build/windows-dependencies"
}
