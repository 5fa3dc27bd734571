# SPDX-License-Identifier: Apache-2.0
# What the scripts of this folder share.

# Runs a command; ends the script when it fails. Standard output goes to `output`.
function(run)
    execute_process(COMMAND ${ARGV}
        RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE errors)
    if(NOT code STREQUAL "0")
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "failed (${code}): ${command}\n${text}\n${errors}")
    endif()
    set(output "${text}" PARENT_SCOPE)
endfunction()

# Compares what the consumers print with what they should.
function(expect_equal actual expected)
    if(NOT actual STREQUAL expected)
        message(FATAL_ERROR "expected:\n${expected}\nbut it is:\n${actual}")
    endif()
endfunction()
