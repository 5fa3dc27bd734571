# SPDX-License-Identifier: Apache-2.0
# What the shared library exports: by name, and used from outside.

add_test(NAME exported_symbols
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/exported_symbols.py
            ${CMAKE_NM} $<TARGET_FILE:headsetmgmt>)

# Links the shared library; the host functions are the program's.
add_executable(exported_functions_test ${CMAKE_CURRENT_LIST_DIR}/exported_functions_test.cpp)
set_target_properties(exported_functions_test PROPERTIES ENABLE_EXPORTS ON CXX_EXTENSIONS OFF)
target_link_libraries(exported_functions_test PRIVATE
    headsetmgmt headsetmgmt_test_support GTest::gmock_main headsetmgmt_build_options)
gtest_discover_tests(exported_functions_test TEST_PREFIX plugin. DISCOVERY_TIMEOUT 120)
