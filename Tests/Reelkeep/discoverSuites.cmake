# Writes a test for each suite of PROGRAM into OUTPUT, except for what the filter LEAVE_OUT names.
execute_process(COMMAND ${PROGRAM} --gtest_list_tests --gtest_filter=-${LEAVE_OUT}
                OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
# Only suites begin at the start of a line and end with a dot, behind which there may be a type.
string(REGEX MATCHALL "(^|\n)[A-Za-z][^. \n]*\\." suites "${listing}")
set(tests "")
foreach(suite IN LISTS suites)
  string(REGEX REPLACE "^\n|\\.$" "" suite ${suite})
  string(REPLACE "/" "-" report ${suite})
  string(APPEND tests
    "add_test([[${suite}]] [[${PROGRAM}]] --gtest_brief=1 [[--gtest_filter=${suite}.*:-${LEAVE_OUT}]] "
    "[[--gtest_output=xml:${REPORTS}/${report}.xml]])\n"
    "set_tests_properties([[${suite}]] PROPERTIES LABELS ${LABEL} TIMEOUT 600)\n")
endforeach()
file(WRITE ${OUTPUT} "${tests}")
