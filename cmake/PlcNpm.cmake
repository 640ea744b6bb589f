# plc_fetch_packages(<result>)
#
# Fetches the packages of package-lock.json in the folder that calls it into the build folder of the
# same place, each checked against its checksum, when it has changed or was not fetched yet. Sets
# <result> to whether they are there; if not, plc_npm_errors says what npm said.
function(plc_fetch_packages result)
  foreach(file package.json package-lock.json)
    configure_file(${CMAKE_CURRENT_SOURCE_DIR}/${file} ${CMAKE_CURRENT_BINARY_DIR}/${file} COPYONLY)
  endforeach()
  file(SHA256 ${CMAKE_CURRENT_SOURCE_DIR}/package-lock.json lock)
  set(fetched "")
  if(EXISTS ${CMAKE_CURRENT_BINARY_DIR}/fetched)
    file(READ ${CMAKE_CURRENT_BINARY_DIR}/fetched fetched)
  endif()
  if(NOT fetched STREQUAL lock)
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    message(STATUS "Fetching the packages of ${folder}")
    execute_process(COMMAND ${PLC_NPM} ci --ignore-scripts --no-audit --no-fund
      WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
      OUTPUT_QUIET ERROR_VARIABLE errors RESULT_VARIABLE failed)
    if(failed)
      set(plc_npm_errors "${errors}" PARENT_SCOPE)
      set(${result} FALSE PARENT_SCOPE)
      return()
    endif()
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/fetched ${lock})
  endif()
  set(${result} TRUE PARENT_SCOPE)
endfunction()
