# The real platform parts below the host build: libutils, liblog, zlib and the AAC decoder, as Debian packages them.
# ANDROID_SYSROOT is set by the cross build; empty means this machine's own packages.
set(ANDROID_SYSROOT "" CACHE PATH "Root folder that holds the packaged Android libraries")

execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-multiarch
                OUTPUT_VARIABLE multiarch OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT multiarch)                 # clang prints nothing
  set(multiarch ${CMAKE_LIBRARY_ARCHITECTURE})
endif()
set(android_library_dir ${ANDROID_SYSROOT}/usr/lib/${multiarch}/android)
set(system_library_dirs ${ANDROID_SYSROOT}/usr/lib/${multiarch} ${ANDROID_SYSROOT}/lib/${multiarch})

find_library(ANDROID_UTILS utils PATHS ${android_library_dir} NO_DEFAULT_PATH REQUIRED)
find_library(ANDROID_LOG log PATHS ${android_library_dir} NO_DEFAULT_PATH REQUIRED)
find_library(FDK_AAC fdk-aac PATHS ${system_library_dirs} REQUIRED)
find_library(ZLIB z PATHS ${system_library_dirs} REQUIRED)
find_path(FDK_AAC_INCLUDE aacdecoder_lib.h
          PATHS ${ANDROID_SYSROOT}/usr/include/fdk-aac /usr/include/fdk-aac NO_DEFAULT_PATH REQUIRED)

add_library(android_utils INTERFACE)
target_include_directories(android_utils SYSTEM INTERFACE /usr/include/android)
target_link_libraries(android_utils INTERFACE ${ANDROID_UTILS} ${ANDROID_LOG})
# The libraries live outside the loader's own folders.
target_link_options(android_utils INTERFACE -Wl,-rpath,${android_library_dir})

add_library(aac_decoder INTERFACE)
target_include_directories(aac_decoder SYSTEM INTERFACE ${FDK_AAC_INCLUDE})
target_link_libraries(aac_decoder INTERFACE ${FDK_AAC})

add_library(zlib_inflate INTERFACE)
target_link_libraries(zlib_inflate INTERFACE ${ZLIB})
