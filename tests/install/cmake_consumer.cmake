# Builds and runs a project that finds the installed library with find_package.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

file(REMOVE_RECURSE ${work_folder})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/cmake_consumer -B ${work_folder} -G ${generator}
    -D CMAKE_BUILD_TYPE=${build_type} -D CMAKE_CXX_COMPILER=${compiler}
    -D CMAKE_CXX_FLAGS=${flags} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${work_folder} --config ${build_type})

run(${work_folder}/phone)
expect_equal("${output}" "started\nconfiguring\nGET http://192.0.2.1/defaultheadsetconfig.json\n")
run(${work_folder}/core)
expect_equal("${output}" "Varos K20\n0\n")
