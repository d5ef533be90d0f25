# Switches, warnings and sanitizers that every target of this project shares.
option(MKVX_BUILD_TOOL "Build the mkvx command-line tool" ON)
option(MKVX_BUILD_TESTS "Build the tests" ON)
option(MKVX_BUILD_BENCH "Build the micro-benchmarks" OFF)
option(MKVX_BUILD_FUZZERS "Build the libFuzzer targets (clang only)" OFF)
set(MKVX_SANITIZE "" CACHE STRING "Comma-separated sanitizers, for example address,undefined")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()
# A compiler cache serves rebuilds, other checkouts and other presets alike.
find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these two the cache lets files with precompiled headers pass.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()
set(CMAKE_CXX_EXTENSIONS ON)      # gnu++: the platform headers use it
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")

add_library(project_warnings INTERFACE)
# Four-character keys such as 'mime' are the platform's own way of naming metadata.
target_compile_options(project_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wno-multichar -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)

# What a target's precompiled headers are made of is included by its sources all the same: a build with
# CMAKE_DISABLE_PRECOMPILE_HEADERS has to work, and the clang preset is one.
if(CCACHE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options(-fpch-preprocess)
endif()

if(MKVX_SANITIZE)
  add_compile_options(-fsanitize=${MKVX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${MKVX_SANITIZE})
  if(NOT MKVX_SANITIZE STREQUAL "thread")
    add_compile_options(-fno-sanitize=vptr)  # the plug-in is built without RTTI, which that check needs
  endif()
endif()
