# Gives the target zav-log-iceutil: the threads and monitors of IceUtil, an installed one.
find_package(Ice REQUIRED COMPONENTS Ice)
add_library(zav-log-iceutil INTERFACE)
target_link_libraries(zav-log-iceutil INTERFACE Ice::Ice)
