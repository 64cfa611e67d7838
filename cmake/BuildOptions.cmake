# How everything here is compiled: C++20, nothing exported unless it says so, warnings are errors.
option(KELMARA_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(KELMARA_COVERAGE "Count which lines of the libraries and tools run" OFF)
option(KELMARA_HARDEN "Build with guards on the stack, checked copies and tables that are read-only" ON)
option(KELMARA_FUZZ "Build the fuzz targets to run for ever, which takes clang" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1")
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
if(KELMARA_COVERAGE)
  set(CMAKE_CXX_FLAGS_DEBUG "-O0 -g1")
endif()

# What is built tells where its sources lie from the root of the tree, wherever that was.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
add_link_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.") # the optimiser of the whole library runs there

find_package(Threads REQUIRED)

if(KELMARA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Every module tells where it has been; only a fuzz target has libFuzzer's main. Warnings are g++'s to give.
if(KELMARA_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link -w -Qunused-arguments)
  add_compile_definitions(__SANITIZE_ADDRESS__=1) # which clang tells otherwise, and headers ask for
endif()

# What makes a mistake harder to use: a guard word on the stack, checked copies, no symbol bound late, tables
# of addresses that are read-only, programs at any address. tests/checks/hardening.sh reads it back from what was
# built. What it costs: docs/performance.md; without it a build is for measuring that alone.
if(KELMARA_HARDEN AND NOT KELMARA_SANITIZE AND NOT KELMARA_COVERAGE)
  add_compile_options(-fstack-protector-strong)
  add_compile_definitions(_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
include(CheckPIESupported)
check_pie_supported()

# Counts what runs of a target, in memory that threads share.
function(count_what_runs target)
  if(KELMARA_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path -fprofile-update=atomic
      "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=${CMAKE_SOURCE_DIR}") # whose sources the counts name
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# Flags of our own code; what is built from Debian's sources keeps its own.
add_library(kelmara_build_options INTERFACE)
target_compile_options(kelmara_build_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wundef)
target_include_directories(kelmara_build_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_link_libraries(kelmara_build_options INTERFACE Threads::Threads)

# For what uses the C++ library's strings, so for everything but the library itself: GCC 12 sees overlaps and
# overruns in them that are not there.
add_library(kelmara_host_options INTERFACE)
target_compile_options(kelmara_host_options INTERFACE -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow)
target_link_libraries(kelmara_host_options INTERFACE kelmara_build_options)
