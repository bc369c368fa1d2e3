# Defines the target zav-log-threading: what provides the dispatcher's threads and monitors.
add_library(zav-log-threading INTERFACE)
target_compile_definitions(zav-log-threading INTERFACE ZAV_LOG_WITH_ICE=$<BOOL:${ZAV_LOG_WITH_ICE}>)
if(ZAV_LOG_WITH_ICE)
    include(cmake/IceUtil.cmake)
    target_link_libraries(zav-log-threading INTERFACE zav-log-iceutil)
endif()
target_link_libraries(zav-log-threading INTERFACE Threads::Threads)
