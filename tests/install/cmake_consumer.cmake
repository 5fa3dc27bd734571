# SPDX-License-Identifier: Apache-2.0
# Builds and runs a project that finds the installed library with find_package.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

# build_consumer(<folder> <variable>...)
function(build_consumer folder)
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/cmake_consumer -B ${folder} -G ${generator}
        -D CMAKE_BUILD_TYPE=${build_type} -D CMAKE_CXX_COMPILER=${compiler}
        -D CMAKE_CXX_FLAGS=${flags} -D CMAKE_PREFIX_PATH=${prefix} ${ARGN})
    run(${CMAKE_COMMAND} --build ${folder} --config ${build_type})
endfunction()

set(phone_says "started\nconfiguring\nGET http://192.0.2.1/defaultheadsetconfig.json\n")

file(REMOVE_RECURSE ${work_folder})
build_consumer(${work_folder}/all)
run(${work_folder}/all/phone)
expect_equal("${output}" "${phone_says}")
run(${work_folder}/all/core)
expect_equal("${output}" "Varos K20\n0\n")

# The shared library alone, where cJSON's headers are not to be found.
build_consumer(${work_folder}/shared
    -D CONSUMER_USES_CORE=OFF -D CMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON)
run(${work_folder}/shared/phone)
expect_equal("${output}" "${phone_says}")
