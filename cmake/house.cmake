# How a folder becomes a target: house_library, house_program, house_test, house_benchmark, house_fuzzer.
#
# Arrows between folders are enforced by the include path. Each library's headers are reached through a folder of
# links of its own, build/include/TARGET, so that an #include of a folder that is not linked does not compile.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib;$ORIGIN")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(HOUSE_SANITIZE "" CACHE STRING "sanitizers to build with, as in -fsanitize=")
option(HOUSE_TESTS "build the tests" ON)
option(HOUSE_BENCHMARKS "build the benchmarks" OFF)
option(HOUSE_FUZZ "build the fuzzers (clang)" OFF)

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})  # for all clones
endif()

include(GNUInstallDirs)
find_package(Threads REQUIRED)

# What every source of ours is built with.
add_library(house_warnings INTERFACE)
target_compile_options(house_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Werror
    # Fixed arithmetic is part of the formats: no contraction into fused operations.
    -ffp-contract=off
    $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)  # so that a closed plug-in really leaves the process
target_compile_definitions(house_warnings INTERFACE QT_NO_KEYWORDS NOMINMAX)
if(HOUSE_SANITIZE)
    target_compile_options(house_warnings INTERFACE
        -fsanitize=${HOUSE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(house_warnings INTERFACE -fsanitize=${HOUSE_SANITIZE})
    target_compile_definitions(house_warnings INTERFACE HOUSE_SANITIZED)
endif()

# The folder of links that makes FOLDER's headers, and no others, reachable for those that link TARGET.
function(house_headers target folder scope)
    set(links ${CMAKE_SOURCE_DIR}/build/include/${target})
    get_filename_component(parent ${links}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${links}/${folder} SYMBOLIC)
    target_include_directories(${target} ${scope} $<BUILD_INTERFACE:${links}> $<INSTALL_INTERFACE:include/mox>)
endfunction()

# house_library(NAME KIND FOLDER SOURCES file.. [PUBLIC target..] [PRIVATE target..] [PUBLISHED])
# KIND is SHARED, STATIC, OBJECT or INTERFACE (headers only: PUBLIC alone has a meaning then). All shared libraries are
# installed, because the programs need them; PUBLISHED ones with their headers and in the CMake package "mox" too.
function(house_library name kind folder)
    cmake_parse_arguments(ARG "PUBLISHED" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${name} ${kind} ${ARG_SOURCES})
    if(kind STREQUAL "INTERFACE")
        house_headers(${name} ${folder} INTERFACE)
        target_compile_features(${name} INTERFACE cxx_std_20)
        target_link_libraries(${name} INTERFACE ${ARG_PUBLIC})
    else()
        house_headers(${name} ${folder} PUBLIC)
        target_compile_features(${name} PUBLIC cxx_std_20)  # for those who find the package too
        target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} $<BUILD_INTERFACE:house_warnings>)
    endif()
    if(ARG_PUBLISHED)
        install(TARGETS ${name} EXPORT mox_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
        install(DIRECTORY ${CMAKE_SOURCE_DIR}/${folder}/ DESTINATION include/mox/${folder}
                FILES_MATCHING PATTERN "*.h")
    elseif(kind STREQUAL "SHARED")
        install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    endif()
endfunction()

# house_program(NAME SOURCES file.. LINK target..)
function(house_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINK} house_warnings)
endfunction()

# house_test(NAME SOURCES file.. LINK target.. [TIMEOUT seconds] [SANITIZED]): one program, one entry of ctest.
# Tests see the shared helpers of tests/ as "tests/...". SANITIZED: ./test also runs it under the sanitizers.
add_custom_target(sanitized_tests)
function(house_test name)
    cmake_parse_arguments(ARG "SANITIZED" "TIMEOUT" "SOURCES;LINK" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    house_program(${name} SOURCES ${ARG_SOURCES} LINK ${ARG_LINK} GTest::gmock GTest::gtest_main)
    house_headers(${name} tests PRIVATE)
    # A test runs once: to optimise it takes longer than it can win.
    if(HOUSE_SANITIZE)
        target_compile_options(${name} PRIVATE -O0)
    elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
        target_compile_options(${name} PRIVATE -O1)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
    if(ARG_SANITIZED)
        add_dependencies(sanitized_tests ${name})
        set_tests_properties(${name} PROPERTIES LABELS sanitized)
    endif()
endfunction()

# house_benchmark(NAME SOURCES file.. LINK target..)
function(house_benchmark name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    house_program(${name} SOURCES ${ARG_SOURCES} LINK ${ARG_LINK} benchmark::benchmark_main)
    house_headers(${name} benchmarks PRIVATE)
endfunction()

# house_fuzzer(NAME SOURCES file.. LINK target..): the sources define LLVMFuzzerTestOneInput.
function(house_fuzzer name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    house_program(${name} SOURCES ${ARG_SOURCES} LINK ${ARG_LINK})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()
