# SPDX-License-Identifier: MIT
# Runs PROGRAM with ARGUMENTS and compares its output with what is expected.
cmake_minimum_required(VERSION 3.25)
string(REPLACE "@WORK@" "${WORK}" ARGUMENTS "${ARGUMENTS}")
file(REMOVE "${WORK}/settings.plist")
set(input)
if(EXISTS "${HERE}/input/${CASE}.in")
  set(input INPUT_FILE "${HERE}/input/${CASE}.in")
endif()
execute_process(COMMAND "${PROGRAM}" ${ARGUMENTS} ${input} WORKING_DIRECTORY "${HERE}/input"
  OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE status)
file(READ "${HERE}/expected/${CASE}.txt" expected)
if(NOT "${output}status ${status}\n" STREQUAL "${expected}")
  message(FATAL_ERROR "expected:\n${expected}\nprinted:\n${output}status ${status}\n${errors}")
endif()
