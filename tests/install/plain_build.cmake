# SPDX-License-Identifier: Apache-2.0
# Configures as a stranger does: no build type, no option, and nothing of what is installed but a
# compiler, CMake, pkg-config and cJSON. Then looks at what each option reports as missing.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

file(REMOVE_RECURSE ${work_folder})
run(${pkg_config} --variable=pcfiledir libcjson)
string(STRIP "${output}" folder)
file(COPY ${folder}/libcjson.pc DESTINATION ${work_folder}/pkgconfig)
set(ENV{PKG_CONFIG_LIBDIR} ${work_folder}/pkgconfig)
unset(ENV{PKG_CONFIG_PATH})
unset(ENV{CMAKE_BUILD_TYPE})

set(build ${work_folder}/build)
set(configure ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/../.. -B ${build} -G ${generator}
    -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_EXPORT_COMPILE_COMMANDS=ON)
foreach(package IN ITEMS CLI11 GTest Python3 benchmark nlohmann_json)
    list(APPEND configure -D CMAKE_DISABLE_FIND_PACKAGE_${package}=ON)
endforeach()

run(${configure})
run(${CMAKE_COMMAND} -L -N ${build})
string(REGEX MATCH "CMAKE_BUILD_TYPE[^\n]*" type "${output}")
expect_equal("${type}" "CMAKE_BUILD_TYPE:STRING=Release")
file(READ ${build}/compile_commands.json commands)
string(FIND "${commands}" " -Werror " place)
expect_equal("${place}" "-1")
string(REGEX MATCH "\"file\": [^\n]*/(program|tests|examples|benchmarks|fuzz)/[a-z]" found "${commands}")
expect_equal("${found}" "")

# expect_missing(<option> <line>...)
function(expect_missing option)
    execute_process(COMMAND ${configure} -D ${option}=ON
        RESULT_VARIABLE code OUTPUT_QUIET ERROR_VARIABLE errors)
    if(code STREQUAL "0")
        message(FATAL_ERROR "${option}: configured without what it needs")
    endif()
    string(REGEX MATCHALL "[^\n]* needs [^\n]*" lines "${errors}")
    list(TRANSFORM lines STRIP)
    expect_equal("${lines}" "${ARGN}")
    file(REMOVE ${build}/CMakeCache.txt)
endfunction()

expect_missing(HEADSETMGMT_PROGRAM
    "HEADSETMGMT_PROGRAM needs libcurl 7.85 (Debian, Ubuntu: libcurl4-openssl-dev)"
    "HEADSETMGMT_PROGRAM needs libmicrohttpd (Debian, Ubuntu: libmicrohttpd-dev)"
    "HEADSETMGMT_PROGRAM needs CLI11 (Debian, Ubuntu: libcli11-dev)"
    "HEADSETMGMT_PROGRAM needs nlohmann/json 3.10 (Debian, Ubuntu: nlohmann-json3-dev)")
expect_missing(HEADSETMGMT_EXAMPLES
    "HEADSETMGMT_EXAMPLES needs libcurl 7.85 (Debian, Ubuntu: libcurl4-openssl-dev)")
expect_missing(HEADSETMGMT_TESTS
    "HEADSETMGMT_TESTS needs nlohmann/json 3.10 (Debian, Ubuntu: nlohmann-json3-dev)"
    "HEADSETMGMT_TESTS needs GoogleTest (Debian, Ubuntu: libgtest-dev)"
    "HEADSETMGMT_TESTS needs GoogleMock (Debian, Ubuntu: libgmock-dev)"
    "HEADSETMGMT_TESTS needs Python (Debian, Ubuntu: python3)")
expect_missing(HEADSETMGMT_BENCHMARKS
    "HEADSETMGMT_BENCHMARKS needs Google Benchmark (Debian, Ubuntu: libbenchmark-dev)")

file(REMOVE ${work_folder}/pkgconfig/libcjson.pc)
expect_missing(HEADSETMGMT_BENCHMARKS
    "The library needs cJSON (Debian, Ubuntu: libcjson-dev)"
    "HEADSETMGMT_BENCHMARKS needs Google Benchmark (Debian, Ubuntu: libbenchmark-dev)")
