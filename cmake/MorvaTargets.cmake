# One place for what every target of the project shares: language level, warnings, floating-point
# rules, visibility, and a build tree that is laid out like the installed one, so that a library finds
# its data by the same relative path in both.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without this it keeps nothing that is compiled with a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime;${CCACHE_PROGRAM}")
endif()

set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR}")
set(MORVA_DATA_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/morvaai")

# From the directory of the libraries to the data directory, as the locators use it at run time.
file(RELATIVE_PATH MORVA_DATA_FROM_LIB "/${CMAKE_INSTALL_LIBDIR}" "/${CMAKE_INSTALL_DATADIR}/morvaai")
# From the directory of the programs to that of the libraries.
file(RELATIVE_PATH MORVA_LIB_FROM_BIN "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")

add_library(morva_settings INTERFACE)
target_compile_options(morva_settings INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion
  -Wold-style-cast -Woverloaded-virtual -Wcast-align
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlapping copies in plain concatenations of std::string.
  target_compile_options(morva_settings INTERFACE -Wno-restrict)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  target_compile_options(morva_settings INTERFACE -fstack-protector-strong)
  target_compile_definitions(morva_settings INTERFACE _FORTIFY_SOURCE=2)
endif()
target_link_options(morva_settings INTERFACE -Wl,-z,relro,-z,now)
if(MORVA_SANITIZE)
  target_compile_options(morva_settings INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_definitions(morva_settings INTERFACE MORVA_SANITIZED)
  target_link_options(morva_settings INTERFACE -fsanitize=address,undefined)
endif()
if(MORVA_FUZZ)
  target_compile_options(morva_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# morva_add_library(NAME SOURCES...): a shared library of the project, include root src/.
function(morva_add_library name)
  add_library(${name} SHARED ${ARGN})
  target_include_directories(${name}
    PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>"
           "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/morvaai>"
    PRIVATE "${PROJECT_SOURCE_DIR}/hostkit")
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name} PRIVATE "$<BUILD_INTERFACE:morva_settings>")
  # Once loaded it stays: singletons, threads and components refer to it until the process ends.
  target_link_options(${name} PRIVATE -Wl,--no-undefined -Wl,-z,nodelete)
  if(MORVA_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,undefs)
    # A third of the time goes into parsing these. In a release it stays so: there every file shows that it
    # includes what it needs.
    target_precompile_headers(${name} PRIVATE
      <algorithm> <array> <charconv> <cmath> <cstdint> <cstring> <functional> <limits> <map> <memory> <optional>
      <span> <string> <string_view> <tuple> <utility> <variant> <vector>)
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  set_property(GLOBAL APPEND PROPERTY MORVA_LIBRARIES ${name})
endfunction()

# morva_limit_exports(TARGET SCRIPT): a library lets out what this version script of the linker names, and no more.
function(morva_limit_exports name script)
  target_link_options(${name} PRIVATE "-Wl,--version-script=${script}")
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${script}")
endfunction()

# What most of the time of compiling a test would go into is parsed once: the first test of the project
# has it, the others take it from there. Tests in a directory with MORVA_MORE_TEST_HEADERS share these too, and those with
# a MORVA_TEST_GROUP, as they are compiled in another way, share with each other alone.
function(morva_share_test_headers name)
  string(MD5 group "${MORVA_MORE_TEST_HEADERS}${MORVA_TEST_GROUP}")
  get_property(first GLOBAL PROPERTY MORVA_FIRST_TEST_${group})
  if(first)
    target_precompile_headers(${name} REUSE_FROM ${first})
  else()
    target_precompile_headers(${name} PRIVATE
      <gmock/gmock.h> <gtest/gtest.h> <algorithm> <filesystem> <fstream> <map> <sstream> <string> <vector>
      ${MORVA_MORE_TEST_HEADERS})
    set_property(GLOBAL PROPERTY MORVA_FIRST_TEST_${group} ${name})
  endif()
endfunction()

# morva_add_test(NAME SOURCES...): a GoogleTest program, one ctest case per test. It sees the public
# headers, the host kit's own headers and tests/. Under sanitizers and emulation, where starting a process
# takes longer than most tests, the whole program is one case.
function(morva_add_test name)
  add_executable(${name} ${ARGN})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/hostkit" "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE morva_settings GTest::gmock_main)
  # What is tested is compiled as it ships; the tests themselves would take half as long again, and under
  # sanitizers, where the optimizer has the most to look at, twice as long.
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  if(MORVA_SANITIZE)
    target_compile_options(${name} PRIVATE -O0)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
  morva_share_test_headers(${name})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 sees faults in the standard library's strings when they come out of a precompiled header.
    target_compile_options(${name} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
  endif()
  if(MORVA_SANITIZE OR CMAKE_CROSSCOMPILING)
    morva_command_of(${name} command)
    add_test(NAME ${name} COMMAND "${command}")
    set_tests_properties(${name} PROPERTIES TIMEOUT 600)
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# morva_command_of(TARGET VARIABLE): what a test has to start to run a program of the project: the program,
# or a script that has it emulated where it is built for another machine. The program takes the script for
# itself, so that it can start itself again.
function(morva_command_of target variable)
  if(NOT CMAKE_CROSSCOMPILING)
    set(${variable} $<TARGET_FILE:${target}> PARENT_SCOPE)
    return()
  endif()
  set(script "${PROJECT_BINARY_DIR}/emulated/${target}")
  # A file is generated once, whoever asks for it.
  get_property(is_generated TARGET ${target} PROPERTY MORVA_HAS_SCRIPT)
  if(NOT is_generated)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    file(GENERATE OUTPUT "${script}" CONTENT
      "#!/bin/sh\nexec ${emulator} -0 \"$0\" '$<TARGET_FILE:${target}>' \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set_property(TARGET ${target} PROPERTY MORVA_HAS_SCRIPT ON)
  endif()
  set(${variable} "${script}" PARENT_SCOPE)
endfunction()

# morva_add_fuzz_target(NAME SOURCES...): a program of the fuzzer, which brings `main`. It sees what a test
# sees. ctest runs it over its inputs and a few mutations of them, always the same ones; scripts/fuzz for as
# long as it is told. See fuzz/CMakeLists.txt.
function(morva_add_fuzz_target name)
  add_executable(fuzz_${name} ${ARGN})
  target_include_directories(fuzz_${name} PRIVATE
    "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/hostkit" "${PROJECT_SOURCE_DIR}/tests")
  # Where the libraries do not tell what is reached, the target alone has to.
  target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer-no-link)
  target_link_libraries(fuzz_${name} PRIVATE morva_settings)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  # Components that are loaded later look here for the functions of the fuzzer.
  set_target_properties(fuzz_${name} PROPERTIES
    ENABLE_EXPORTS ON RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
  add_dependencies(fuzz_all fuzz_${name})
  if(MORVA_BUILD_TESTS AND NOT MORVA_FUZZ)
    add_test(NAME fuzz_${name} COMMAND "${PROJECT_SOURCE_DIR}/fuzz/smoke" $<TARGET_FILE:fuzz_${name}>)
    set_tests_properties(fuzz_${name} PROPERTIES TIMEOUT 120)
  endif()
endfunction()
