# Compares the C entry points that a built libmgmtmsg exports with the list
# in abi/mgmtmsg.symbols, in both directions, and checks that the device
# memory manager's symbols are imports of the library, not definitions.
#   cmake -DNM=<nm> -DLIBRARY=<libmgmtmsg.so> -DSYMBOLS=<mgmtmsg.symbols> -P check_symbols.cmake
# C names are those that are not mangled C++ names (no _Z prefix).
foreach(var IN ITEMS NM LIBRARY SYMBOLS)
  if(NOT ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()

# The names of `nm -D <mode>` on the library, without symbol versions.
function(dynamic_names mode out)
  execute_process(COMMAND ${NM} -D ${mode} ${LIBRARY}
                  OUTPUT_VARIABLE listing RESULT_VARIABLE status ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} -D ${mode} ${LIBRARY} failed: ${errors}")
  endif()
  string(REGEX MATCHALL "[^\n]+" lines "${listing}")
  set(names)
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^.* ([^ ]+)$" "\\1" name "${line}")
    string(REGEX REPLACE "@.*$" "" name "${name}")
    list(APPEND names ${name})
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

file(STRINGS ${SYMBOLS} listed REGEX "^[A-Za-z_]")
dynamic_names(--defined-only defined)
dynamic_names(--undefined-only undefined)

set(exported ${defined})
list(FILTER exported EXCLUDE REGEX "^_Z")

# The items of list `a` that are not in list `b`.
function(difference a b out)
  set(result ${${a}})
  if(result AND ${b})
    list(REMOVE_ITEM result ${${b}})
  endif()
  set(${out} ${result} PARENT_SCOPE)
endfunction()

set(imports OXA_Malloc_F OXA_Free_F g_aucOxaMemPt)
difference(listed exported not_exported)
difference(exported listed not_listed)
difference(imports undefined not_imported)

list(LENGTH listed listed_count)
list(LENGTH exported exported_count)
message(STATUS "${listed_count} entry points listed, ${exported_count} C symbols exported")
set(failed FALSE)
foreach(kind IN ITEMS not_exported not_listed not_imported)
  if(${kind})
    set(failed TRUE)
    list(LENGTH ${kind} count)
    list(JOIN ${kind} "\n  " names)
    string(REPLACE "_" " " title "${kind}")
    message(STATUS "${title} (${count}):\n  ${names}")
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "the exported symbols of ${LIBRARY} differ from ${SYMBOLS}")
endif()
