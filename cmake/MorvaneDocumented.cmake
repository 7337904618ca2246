# morvane_documented_program(name file): builds the program that a Markdown file shows, and tests that it prints what the file
# says that it prints. The program is the file's first block marked cpp, the output the first block marked text behind it.
function(morvane_documented_program name file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" text)
    foreach(block cpp text)
        string(FIND "${text}" "\n```${block}\n" start)
        if(start EQUAL -1)
            message(FATAL_ERROR "${file} has no block marked ${block}")
        endif()
        string(LENGTH "\n```${block}\n" opening)
        math(EXPR start "${start} + ${opening}")
        string(SUBSTRING "${text}" ${start} -1 text)
        string(FIND "${text}" "\n```\n" end)
        math(EXPR end "${end} + 1")
        string(SUBSTRING "${text}" 0 ${end} ${block}_block)
    endforeach()
    set(program "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
    set(expected "${CMAKE_CURRENT_BINARY_DIR}/${name}.txt")
    # file(CONFIGURE) leaves a file alone that holds the same already, so that nothing is built for nothing.
    file(CONFIGURE OUTPUT "${program}" CONTENT "${cpp_block}" @ONLY NEWLINE_STYLE UNIX)
    file(CONFIGURE OUTPUT "${expected}" CONTENT "${text_block}" @ONLY NEWLINE_STYLE UNIX)

    add_executable(${name} "${program}")
    target_link_libraries(${name} PRIVATE Morvane::MorvaneU morvane_options)
    add_test(NAME documented.${name} COMMAND "${CMAKE_COMMAND}"
        "-DPROGRAM=$<TARGET_FILE:${name}>"
        "-DEXPECTED=${expected}"
        "-DWORK=${CMAKE_CURRENT_BINARY_DIR}/${name}_work"
        -P "${PROJECT_SOURCE_DIR}/tests/documented_test.cmake")
endfunction()
