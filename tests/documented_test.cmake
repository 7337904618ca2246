# Runs a program that a document shows, in an empty folder. Needs PROGRAM, EXPECTED (what the document says it prints) and WORK.

include("${CMAKE_CURRENT_LIST_DIR}/expect.cmake")

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
run(0 "${CMAKE_COMMAND}" -E chdir "${WORK}" "${PROGRAM}")
expect_output("${out}" "${EXPECTED}")
