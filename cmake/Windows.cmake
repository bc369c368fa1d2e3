# Windows looks for a DLL next to the program that needs it, so all programs and DLLs are built into one folder.
if(NOT CMAKE_RUNTIME_OUTPUT_DIRECTORY)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()

# zlib becomes part of our DLL.
set(ZLIB_USE_STATIC_LIBS ON)

# The compiler's run-time libraries are put there and into the package as well: exceptions and the standard streams
# cross between the application and the library, so both must use the same ones.
set(ZAV_LOG_RUNTIME_DLLS "")
if(MINGW)
    get_filename_component(compiler_dir ${CMAKE_CXX_COMPILER} DIRECTORY)
    foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        if(NOT EXISTS ${path})
            set(path ${compiler_dir}/${name})
        endif()
        file(REAL_PATH ${path} path)
        file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
        list(APPEND ZAV_LOG_RUNTIME_DLLS ${path})
    endforeach()
endif()
