# SPDX-License-Identifier: Apache-2.0
# Configures the library alone, as a packager does, and checks that it is hardened unless the
# builder gives flags.

include(${CMAKE_CURRENT_LIST_DIR}/checks.cmake)

# configured(<flag>...): leaves in `commands` how files would be compiled.
function(configured)
    file(REMOVE_RECURSE ${work_folder})
    run(${CMAKE_COMMAND} -E env --unset=CXXFLAGS --unset=LDFLAGS
        ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/../.. -B ${work_folder} -G ${generator}
        -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_EXPORT_COMPILE_COMMANDS=ON ${ARGN})
    file(READ ${work_folder}/compile_commands.json commands)
    set(commands "${commands}" PARENT_SCOPE)
endfunction()

set(hardening "-fstack-protector-strong -Werror=format-security -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2")

configured()
string(FIND "${commands}" "${hardening}" place)
if(place EQUAL -1)
    message(FATAL_ERROR "without flags of the builder: not found in ${commands}")
endif()

foreach(given IN ITEMS CMAKE_CXX_FLAGS=-g1 CMAKE_EXE_LINKER_FLAGS=-Wl,-O1
        CMAKE_SHARED_LINKER_FLAGS=-Wl,-O1)
    configured(-D ${given})
    string(REGEX MATCH "-fstack-protector|format-security|FORTIFY" found "${commands}")
    expect_equal("${given}: ${found}" "${given}: ")
endforeach()
