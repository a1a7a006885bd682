# A failure planted in the fuzzer (a frame in render mode 1, which one press of V gives) must
# come back as a log of that one event.
execute_process(COMMAND ${FUZZ} --events 1000 --seed 5 --fail-in-mode 1 --minimise 120
  --log-failure ${LOG} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 1)
  message(FATAL_ERROR "expected the planted failure (exit 1), got ${rc}:\n${out}${err}")
endif()
file(STRINGS ${LOG} events REGEX "^[0-9]")
list(LENGTH events count)
if(NOT count EQUAL 1 OR NOT events MATCHES " keydown - .* 86$")
  message(FATAL_ERROR "the log was not shrunk to the one V press:\n${out}\n${events}")
endif()
message(STATUS "${out}")
