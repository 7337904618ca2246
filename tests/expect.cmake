# What the scripts that test programs from outside share: running a program and holding its results against what is expected.
# Every fault is told, and the script then fails.

function(fault text)
    message(SEND_ERROR "${text}")
endfunction()

# run(STATUS program arguments...): the program ends with that status. Sets `out` and `err`; in both a line ends in a line
# feed alone, whatever the program wrote.
function(run status)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
    if(NOT result STREQUAL status)
        list(JOIN ARGN " " command)
        fault("${command}\nended with ${result} instead of ${status}:\n${output}${errors}")
    endif()
    set(out "${output}" PARENT_SCOPE)
    set(err "${errors}" PARENT_SCOPE)
endfunction()

function(expect_same_files actual expected)
    execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${actual}" "${expected}" RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
    if(NOT result EQUAL 0)
        fault("${actual} differs from ${expected}")
    endif()
endfunction()

# What a program printed, held against a committed file. Times differ from run to run and are masked.
function(expect_output actual expected)
    string(REGEX REPLACE "in [0-9.,]+ ms" "in ... ms" actual "${actual}")
    file(READ "${expected}" wanted)
    if(NOT actual STREQUAL wanted)
        fault("The output differs from ${expected}:\n${actual}")
    endif()
endfunction()
