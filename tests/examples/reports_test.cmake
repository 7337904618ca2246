# Runs the two report programs. Needs DICTIONARY and POOL (the programs), DATA (the samples) and EXPECTED (committed outputs).

include("${CMAKE_CURRENT_LIST_DIR}/../expect.cmake")

set(options --by-value --look-up WIDTH --look-up depth)
run(0 "${CMAKE_COMMAND}" -E chdir "${DATA}" "${DICTIONARY}" --quiet ${options} settings.txt)
expect_output("${out}" "${EXPECTED}/settings-by-value.txt")
run(0 "${CMAKE_COMMAND}" -E chdir "${DATA}" "${DICTIONARY}" --quiet settings-utf-16be.txt)
expect_output("${out}" "${EXPECTED}/settings-utf-16be.txt")
run(1 "${DICTIONARY}" --quiet "${DATA}/missing.txt")
if(NOT err MATCHES "dictionary_report: .*missing.txt: there is no such file\n$")
    fault("A missing file is told as: ${err}")
endif()
run(2 "${DICTIONARY}")

# The counts are those of the seeded sequences, whatever order the threads run in.
run(0 "${POOL}" --threads 3 --blocks 20000)
expect_output("${out}" "${EXPECTED}/pools.txt")
run(2 "${POOL}" --threads 0)
run(2 "${POOL}" --blocks many)
