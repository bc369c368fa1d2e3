# Defines the target zav-log-iceutil: the threads and monitors of IceUtil, from an installed Ice or, if there is none
# for the platform, from Ice's sources. iceutil_library is what our static library is linked with.
set(ZAV_LOG_ICEUTIL_SOURCE_DIR "" CACHE PATH "Folder \"cpp\" of Ice's sources; empty to use an installed Ice")

if(NOT ZAV_LOG_ICEUTIL_SOURCE_DIR)
    find_package(Ice REQUIRED COMPONENTS Ice)
    add_library(zav-log-iceutil INTERFACE)
    target_link_libraries(zav-log-iceutil INTERFACE Ice::Ice)
    set(iceutil_library Ice::Ice)
    return()
endif()

set(iceutil_sources
    src/Ice/Cond.cpp
    src/Ice/Thread.cpp
    src/IceUtil/ConsoleUtil.cpp
    src/IceUtil/MutexProtocol.cpp
    src/IceUtil/RecMutex.cpp
    src/IceUtil/Shared.cpp
    src/IceUtil/StringConverter.cpp
    src/IceUtil/StringUtil.cpp
    src/IceUtil/ThreadException.cpp
    src/IceUtil/Time.cpp
    src/IceUtil/Unicode.cpp
    src/IceUtil/UtilException.cpp)
list(TRANSFORM iceutil_sources PREPEND ${ZAV_LOG_ICEUTIL_SOURCE_DIR}/)

add_library(zav-log-iceutil STATIC ${iceutil_sources})
set(iceutil_library zav-log-iceutil)
set_target_properties(zav-log-iceutil PROPERTIES POSITION_INDEPENDENT_CODE ON EXPORT_NAME iceutil)
target_include_directories(zav-log-iceutil
    SYSTEM PUBLIC $<BUILD_INTERFACE:${ZAV_LOG_ICEUTIL_SOURCE_DIR}/include>)
target_include_directories(zav-log-iceutil PRIVATE ${ZAV_LOG_ICEUTIL_SOURCE_DIR}/src)
target_compile_definitions(zav-log-iceutil PUBLIC ICE_STATIC_LIBS)
target_compile_options(zav-log-iceutil PRIVATE -w)
if(MINGW)
    target_compile_definitions(zav-log-iceutil PRIVATE _WIN32_WINNT=0x0601)
    # Without it the C library's header does not declare localtime_r.
    set_source_files_properties(${ZAV_LOG_ICEUTIL_SOURCE_DIR}/src/IceUtil/Time.cpp
        PROPERTIES COMPILE_DEFINITIONS _POSIX_C_SOURCE=200809L)
endif()
target_link_libraries(zav-log-iceutil PUBLIC Threads::Threads)
