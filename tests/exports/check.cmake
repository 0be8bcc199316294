# cmake -DNM=... -DREADELF=... -DLIBRARY=... -P check.cmake: the library's dynamic symbols against the
# lists beside this file. host_calls.txt is complete: plain C names, no others may be exported.
# cpp_names.txt is what C++ hosts rely on; a name listed twice has two forms. Exported data are
# protected, so that the library never takes a host's variable for its own.
cmake_minimum_required(VERSION 3.25)

# The defined symbols with their kind and address cut off, each form once.
function(read_symbols result)
  execute_process(COMMAND ${NM} -D --defined-only ${ARGN} ${LIBRARY}
    OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "[][;]" "_" lines "${lines}")
  string(REGEX REPLACE "(^|\n)[0-9a-f]* +[A-Za-z] " ";" symbols "${lines}")
  string(REPLACE "\n" "" symbols "${symbols}")
  list(REMOVE_DUPLICATES symbols)
  set(${result} "${symbols}" PARENT_SCOPE)
endfunction()

set(faults "")
read_symbols(plain)
read_symbols(demangled -C)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/host_calls.txt host_calls)
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/cpp_names.txt cpp_names)
foreach(call IN LISTS host_calls)
  if(NOT call IN_LIST plain)
    list(APPEND faults "missing host call: ${call}")
  endif()
endforeach()
foreach(symbol IN LISTS plain)
  if(NOT symbol MATCHES "^_|^$" AND NOT symbol IN_LIST host_calls AND NOT symbol IN_LIST cpp_names)
    list(APPEND faults "plain C name that is no host call: ${symbol}")
  endif()
endforeach()

string(REGEX REPLACE "\\([^;]*" "" names "${demangled}")
foreach(name IN LISTS cpp_names)
  list(FIND names ${name} place)
  if(place EQUAL -1)
    list(APPEND faults "missing: ${name}")
  else()
    list(REMOVE_AT names ${place})
  endif()
endforeach()

execute_process(COMMAND ${READELF} -W --dyn-syms ${LIBRARY}
  OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "OBJECT +GLOBAL +[A-Z]+ +[0-9]+ [^\n]+" data "${lines}")
if(NOT data)
  list(APPEND faults "no exported data")
endif()
foreach(symbol IN LISTS data)
  # What the compiler makes of a class has a name that no variable can have.
  if(NOT symbol MATCHES "PROTECTED" AND NOT symbol MATCHES " _ZT[ISV]")
    list(APPEND faults "data that are not protected: ${symbol}")
  endif()
endforeach()

if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "${LIBRARY}:\n  ${faults}")
endif()
