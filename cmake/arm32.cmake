# Cross build for 32-bit ARM, hard float, with Debian's compiler, against the unpacked packages that
# scripts/arm32-sysroot prepares; what is built runs under qemu-arm.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(arm32_triplet arm-linux-gnueabihf)
set(CMAKE_LIBRARY_ARCHITECTURE ${arm32_triplet})
set(CMAKE_C_COMPILER ${arm32_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${arm32_triplet}-g++)

get_filename_component(ANDROID_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm32-sysroot ABSOLUTE)
set(ANDROID_SYSROOT ${ANDROID_SYSROOT} CACHE PATH "Root folder that holds the packaged Android libraries")
set(CMAKE_PREFIX_PATH ${ANDROID_SYSROOT}/usr)

# The machine's own /usr/include must stay out: its headers are another machine's.
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES
    ${ANDROID_SYSROOT}/usr/include ${ANDROID_SYSROOT}/usr/include/${arm32_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# The compiler tells of a change between its own old versions, which nothing here is built with.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(arm32_link "")
set(arm32_run "")
foreach(folder usr/lib/${arm32_triplet}/android usr/lib/${arm32_triplet} lib/${arm32_triplet} usr/lib/p7zip)
  string(APPEND arm32_link " -Wl,-rpath-link,${ANDROID_SYSROOT}/${folder}")
  list(APPEND arm32_run ${ANDROID_SYSROOT}/${folder})
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${arm32_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${arm32_link}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${arm32_link}")

# The C and C++ libraries are the cross compiler's own. The loader forgets folders of a run path after a miss in one of
# them, so all of ours are in the environment.
list(JOIN arm32_run : arm32_run)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/${arm32_triplet} -E LD_LIBRARY_PATH=${arm32_run})
