# Fails unless the plug-in's dynamic symbol table defines exactly Qt's plug-in entry points.
execute_process(COMMAND "${NM}" -D --defined-only "${PLUGIN}"
                OUTPUT_VARIABLE table RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "nm failed on ${PLUGIN}")
endif()
# Only global symbols (upper-case type letters) leave the library; an instrumented build keeps a
# few local ones in the dynamic table for its own relocations.
string(REGEX MATCHALL " [A-Z] [^ \n]+\n" names "${table}")
list(TRANSFORM names REPLACE "^ [A-Z] " "")
list(TRANSFORM names STRIP)
list(SORT names)
if(NOT names STREQUAL "qt_plugin_instance;qt_plugin_query_metadata_v2")
  message(FATAL_ERROR "unexpected exported symbols: ${names}")
endif()
