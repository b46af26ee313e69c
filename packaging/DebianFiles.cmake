# CPack runs this where the package's files lie before they are packed: they become as Debian has them, and get the time of
# the commit, which is in SOURCE_DATE_EPOCH.
set(share ${CPACK_TEMPORARY_DIRECTORY}/usr/share)
file(RENAME ${share}/doc/shotlight/LICENSE ${share}/doc/shotlight/copyright)
file(RENAME ${share}/doc/shotlight/CHANGELOG.md ${share}/doc/shotlight/changelog)
file(GLOB compressed ${share}/man/man1/*.1 ${share}/doc/shotlight/changelog)
execute_process(COMMAND gzip -9n ${compressed} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch -h -d @$ENV{SOURCE_DATE_EPOCH} {} +
  COMMAND_ERROR_IS_FATAL ANY)
