# SPDX-License-Identifier: Apache-2.0
# Builds and runs a program with what pkg-config reports for the installed library.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${libdir}/pkgconfig)
run(${pkg_config} --modversion headsetmgmt)
expect_equal("${output}" "1.0.0\n")

# The shared library brings cJSON along; only a static link has to name it.
run(${pkg_config} --libs headsetmgmt)
string(FIND "${output}" "-lcjson" place)
expect_equal("${place}" "-1")
run(${pkg_config} --static --libs headsetmgmt)
string(REGEX MATCH "-lheadsetmgmt .*-lcjson" libraries "${output}")
expect_equal("${libraries}" "-lheadsetmgmt -lcjson")

run(${pkg_config} --cflags --libs headsetmgmt)
separate_arguments(package_flags UNIX_COMMAND "${output}")
separate_arguments(build_flags UNIX_COMMAND "${flags}")
file(MAKE_DIRECTORY ${work_folder})
run(${compiler} -std=c++17 ${build_flags} ${CMAKE_CURRENT_LIST_DIR}/phone.cpp
    -o ${work_folder}/phone ${package_flags} -pthread -Wl,-rpath,${prefix}/${libdir})

run(${work_folder}/phone)
expect_equal("${output}" "started\nconfiguring\nGET http://192.0.2.1/defaultheadsetconfig.json\n")
