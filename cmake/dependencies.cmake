# SPDX-License-Identifier: Apache-2.0
# Everything that is looked for outside, in one place, by what needs it. Ends with the names of all
# Debian packages that are missing.

set(headsetmgmt_missing "")

# headsetmgmt_need(<needed by> <what> <Debian package> <condition>...)
macro(headsetmgmt_need user what package)
    if(NOT (${ARGN}))
        string(APPEND headsetmgmt_missing
            "\n  ${user} needs ${what} (Debian, Ubuntu: ${package})")
    endif()
endmacro()

find_package(Threads REQUIRED)
find_package(PkgConfig QUIET)
headsetmgmt_need("The library" pkg-config pkg-config PKG_CONFIG_FOUND)
if(PKG_CONFIG_FOUND)
    pkg_check_modules(cJSON QUIET IMPORTED_TARGET libcjson)
    headsetmgmt_need("The library" cJSON libcjson-dev cJSON_FOUND)
endif()

if(HEADSETMGMT_PROGRAM OR HEADSETMGMT_EXAMPLES)
    set(user HEADSETMGMT_EXAMPLES)
    if(HEADSETMGMT_PROGRAM)
        set(user HEADSETMGMT_PROGRAM)
    endif()
    if(PKG_CONFIG_FOUND)
        pkg_check_modules(libcurl QUIET IMPORTED_TARGET libcurl>=7.85)
    endif()
    headsetmgmt_need(${user} "libcurl 7.85" libcurl4-openssl-dev libcurl_FOUND)
endif()

if(HEADSETMGMT_PROGRAM)
    if(PKG_CONFIG_FOUND)
        pkg_check_modules(libmicrohttpd QUIET IMPORTED_TARGET libmicrohttpd)
    endif()
    find_package(CLI11 QUIET)
    headsetmgmt_need(HEADSETMGMT_PROGRAM libmicrohttpd libmicrohttpd-dev libmicrohttpd_FOUND)
    headsetmgmt_need(HEADSETMGMT_PROGRAM CLI11 libcli11-dev CLI11_FOUND)
endif()

if(HEADSETMGMT_PROGRAM OR HEADSETMGMT_TESTS)
    set(user HEADSETMGMT_TESTS)
    if(HEADSETMGMT_PROGRAM)
        set(user HEADSETMGMT_PROGRAM)
    endif()
    find_package(nlohmann_json 3.10 QUIET)
    headsetmgmt_need(${user} "nlohmann/json 3.10" nlohmann-json3-dev nlohmann_json_FOUND)
endif()

if(HEADSETMGMT_TESTS)
    find_package(GTest QUIET)
    find_package(Python3 QUIET COMPONENTS Interpreter)
    headsetmgmt_need(HEADSETMGMT_TESTS GoogleTest libgtest-dev GTest_FOUND)
    headsetmgmt_need(HEADSETMGMT_TESTS GoogleMock libgmock-dev TARGET GTest::gmock_main)
    headsetmgmt_need(HEADSETMGMT_TESTS Python python3 Python3_FOUND)
endif()

if(HEADSETMGMT_BENCHMARKS)
    find_package(benchmark QUIET)
    headsetmgmt_need(HEADSETMGMT_BENCHMARKS "Google Benchmark" libbenchmark-dev benchmark_FOUND)
endif()

if(headsetmgmt_missing)
    message(FATAL_ERROR "Install what is missing, or set the option to OFF:${headsetmgmt_missing}")
endif()
