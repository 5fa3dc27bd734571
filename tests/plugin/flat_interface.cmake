# SPDX-License-Identifier: Apache-2.0
# The plug-in from outside: the flat interface, start and stop, the host's events.

set(flat_interface_libraries headsetmgmt_plugin headsetmgmt_core)

# A process for each: many look at a library that was never started.
headsetmgmt_add_test(flat_interface_test
    PROCESS_FOR_EACH
    SOURCES
        call_gate_test.cpp
        concurrent_calls_test.cpp
        exit_test.cpp
        flat_interface_test.cpp
        host_events_test.cpp
        phone_plugin_impl_test.cpp
        stop_test.cpp
        transcripts_changes_test.cpp
        transcripts_inventory_test.cpp
        transcripts_test.cpp
    LIBRARIES ${flat_interface_libraries})

headsetmgmt_add_test(stop_windows_test
    SOURCES
        exit_windows_test.cpp
        stop_anywhere_test.cpp
        stop_under_way.cpp
        stop_windows_test.cpp
    LIBRARIES ${flat_interface_libraries})

# A program of its own: its linker routes one of the plug-in's calls through the test.
headsetmgmt_add_test(manager_deletions_test
    SOURCES manager_deletions_test.cpp
    LIBRARIES ${flat_interface_libraries})
target_link_options(manager_deletions_test PRIVATE
    -Wl,--wrap=_ZN11headsetmgmt6config21delete_config_managerEv)

# A program of its own: it counts what the whole program allocates.
headsetmgmt_add_test(growth_test
    SOURCES growth_test.cpp
    LIBRARIES ${flat_interface_libraries})

# A program of its own: it replaces functions of the threads library.
headsetmgmt_add_test(start_failure_test
    SOURCES start_failure_test.cpp
    LIBRARIES ${flat_interface_libraries})

# A program of its own: it replaces operator new.
headsetmgmt_add_test(shortage_test
    SOURCES shortage_test.cpp
    LIBRARIES ${flat_interface_libraries} headsetmgmt_short_memory)

# A host that loads the shared library: it exports the host functions.
add_executable(unload_test unload_test.cpp)
target_compile_features(unload_test PRIVATE cxx_std_17)
set_target_properties(unload_test PROPERTIES CXX_EXTENSIONS OFF ENABLE_EXPORTS ON)
target_include_directories(unload_test PRIVATE
    ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include)
target_compile_definitions(unload_test PRIVATE
    HEADSETMGMT_LIBRARY="$<TARGET_FILE:headsetmgmt>")
target_link_libraries(unload_test PRIVATE
    headsetmgmt_test_support GTest::gtest_main ${CMAKE_DL_LIBS} headsetmgmt_build_options)
add_dependencies(unload_test headsetmgmt)
gtest_discover_tests(unload_test TEST_PREFIX plugin. DISCOVERY_TIMEOUT 120)
