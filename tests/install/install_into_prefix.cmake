# SPDX-License-Identifier: Apache-2.0
# Installs the build into an empty prefix and compares the files there with a list.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

file(REMOVE_RECURSE ${prefix})
run(${CMAKE_COMMAND} --install ${build_folder} --config ${build_type} --prefix ${prefix})

file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/*)
list(SORT headers)
list(JOIN headers "\n" headers)
expect_equal("${headers}" "headsetmgmt/accessory_info.h
headsetmgmt/config.h
headsetmgmt/config_manager.h
headsetmgmt/constants.h
headsetmgmt/dispatcher.h
headsetmgmt/executor.h
headsetmgmt/export.h
headsetmgmt/host_config_driver.h
headsetmgmt/log.h
headsetmgmt/metrics.h
headsetmgmt/mutex.h
headsetmgmt/phone/flat_interface.h
headsetmgmt/phone/host_functions.h
headsetmgmt/phone/host_types.h
headsetmgmt/plugins.h
headsetmgmt/system_info.h
headsetmgmt/types.h
headsetmgmt/utilities.h")

string(TOLOWER "${build_type}" configuration)
file(GLOB_RECURSE libraries RELATIVE ${prefix}/${libdir} ${prefix}/${libdir}/*)
list(SORT libraries)
list(JOIN libraries "\n" libraries)
expect_equal("${libraries}" "cmake/headsetmgmt/headsetmgmtConfig.cmake
cmake/headsetmgmt/headsetmgmtConfigVersion.cmake
cmake/headsetmgmt/headsetmgmtTargets-${configuration}.cmake
cmake/headsetmgmt/headsetmgmtTargets.cmake
libheadsetmgmt.so
libheadsetmgmt.so.1
libheadsetmgmt.so.1.0.0
libheadsetmgmt_core.a
libheadsetmgmt_document.a
pkgconfig/headsetmgmt.pc")

file(READ_SYMLINK ${prefix}/${libdir}/libheadsetmgmt.so link)
expect_equal("${link}" "libheadsetmgmt.so.1")
file(READ_SYMLINK ${prefix}/${libdir}/libheadsetmgmt.so.1 link)
expect_equal("${link}" "libheadsetmgmt.so.1.0.0")

# The system knows where libraries lie; a path in the library would be searched before.
run(${readelf} --dynamic --wide ${prefix}/${libdir}/libheadsetmgmt.so)
string(REGEX MATCH "soname: [^\n]*" soname "${output}")
expect_equal("${soname}" "soname: [libheadsetmgmt.so.1]")
string(REGEX MATCH "[(](RPATH|RUNPATH)[)][^\n]*" path "${output}")
expect_equal("${path}" "")

# Another compiler refuses what this one leaves for link-time optimisation.
foreach(name IN ITEMS core document)
    run(${readelf} --sections --wide ${prefix}/${libdir}/libheadsetmgmt_${name}.a)
    string(REGEX MATCH "[.]gnu[.](debug)?lto[^ ]*" section "${output}")
    expect_equal("${section}" "")
endforeach()

# A prefix may be moved, and a package is built on another machine: no file that other builds read
# may name a folder of this one.
file(GLOB_RECURSE descriptions ${prefix}/${libdir}/*.cmake ${prefix}/${libdir}/*.pc)
foreach(description IN LISTS descriptions)
    file(READ ${description} text)
    foreach(folder IN ITEMS ${prefix} ${build_folder})
        string(FIND "${text}" "${folder}" place)
        if(NOT place EQUAL -1)
            message(FATAL_ERROR "${description} names ${folder}")
        endif()
    endforeach()
endforeach()
