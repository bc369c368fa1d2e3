# xxHash is used header-only. Its licence must accompany what it was compiled into: it is the comment at the beginning
# of the header.
find_path(xxhash_headers xxhash.h REQUIRED)
file(READ ${xxhash_headers}/xxhash.h xxhash_licence LIMIT 4000)
string(FIND "${xxhash_licence}" "*/" end)
string(SUBSTRING "${xxhash_licence}" 0 ${end} xxhash_licence)
string(REGEX REPLACE "(^|\n)[ /]*\\*" "\\1" xxhash_licence "${xxhash_licence}")
string(STRIP "${xxhash_licence}" xxhash_licence)
set(xxhash_licence_file ${PROJECT_BINARY_DIR}/LICENSE.xxHash)
file(CONFIGURE OUTPUT ${xxhash_licence_file} CONTENT "@xxhash_licence@\n" @ONLY)
