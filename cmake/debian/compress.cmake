# Debian wants manual pages and changelogs compressed, the same bytes every time.
file(GLOB_RECURSE plc_files
  ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man?/*.?
  ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog
  ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog.Debian)
if(plc_files)
  execute_process(COMMAND gzip --best --no-name --force ${plc_files} COMMAND_ERROR_IS_FATAL ANY)
endif()
