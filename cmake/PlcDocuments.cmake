# The manual and the shell's completion of a program, whose lists of options are made of the tables
# that the program itself reads its command line by.

# plc_add_documents(<program> <writer>)
#
# Makes docs/man/<program>.1 and tools/completion/<program> in the build folder with <writer>, an
# executable that fills the templates of the same names in the sources.
function(plc_add_documents program writer)
  set(manual docs/man/${program}.1)
  set(completion tools/completion/${program})
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/docs/man ${PROJECT_BINARY_DIR}/tools/completion)
  foreach(kind manual completion)
    add_custom_command(
      OUTPUT ${PROJECT_BINARY_DIR}/${${kind}}
      COMMAND ${writer} ${kind} ${PROJECT_SOURCE_DIR}/${${kind}}.in ${PROJECT_BINARY_DIR}/${${kind}}
      DEPENDS ${writer} ${PROJECT_SOURCE_DIR}/${${kind}}.in
      COMMENT "Writing the ${kind} of ${program}"
      VERBATIM)
  endforeach()
  add_custom_target(${program}_documents ALL
    DEPENDS ${PROJECT_BINARY_DIR}/${manual} ${PROJECT_BINARY_DIR}/${completion})
endfunction()
