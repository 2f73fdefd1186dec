# Writes the header HEADER with the version VERSION and the commit that the tree SOURCE is at, as it is
# when the build runs; only when that is another, so that nothing is compiled without need.
find_program(git git)
set(commit "")
if(git)
  execute_process(COMMAND "${git}" -C "${SOURCE}" rev-parse --short=12 HEAD
    OUTPUT_VARIABLE commit ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
  execute_process(COMMAND "${git}" -C "${SOURCE}" diff-index --quiet HEAD --
    RESULT_VARIABLE changed ERROR_QUIET OUTPUT_QUIET)
  if(commit AND changed)
    string(APPEND commit ", changed")
  endif()
endif()
if(NOT commit)
  set(commit "of an unknown commit")
endif()
file(CONFIGURE OUTPUT "${HEADER}" CONTENT [[
// The version with the commit that it was built from, for people.
#pragma once

#define QUILLON_VERSION_AND_COMMIT "@VERSION@ (@commit@)"
]] @ONLY)
