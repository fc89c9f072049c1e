# cmake -DDOXYGEN=<doxygen> -DCONFIG=<Doxyfile> -DOUTPUT=<its output folder> -P CheckDoxygen.cmake
# Renders the public headers' documentation and fails when Doxygen warned about
# anything (its warning log, OUTPUT/warnings.log, is not empty): an undocumented
# class, markup it cannot read, a reference it cannot resolve.
file(REMOVE_RECURSE ${OUTPUT})
file(MAKE_DIRECTORY ${OUTPUT})
execute_process(COMMAND ${DOXYGEN} ${CONFIG} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "doxygen failed (${result})")
endif()
file(READ ${OUTPUT}/warnings.log warnings)
if(NOT warnings STREQUAL "")
  message(FATAL_ERROR "doxygen warnings:\n${warnings}")
endif()
