# What is installed: both programs side by side, as pathdesk looks for pathstat beside itself, the manual page and the
# completion for bash, which pathdesk writes itself, and what a user reads.
include(GNUInstallDirs)

set(manual_page ${CMAKE_BINARY_DIR}/generated/pathdesk.1)
set(bash_completion ${CMAKE_BINARY_DIR}/generated/pathdesk.bash)
add_custom_command(
  OUTPUT ${manual_page} ${bash_completion}
  COMMAND pathdesk --manual-page > ${manual_page}
  COMMAND pathdesk --bash-completion > ${bash_completion}
  DEPENDS pathdesk
  VERBATIM)
add_custom_target(user_files ALL DEPENDS ${manual_page} ${bash_completion})

install(TARGETS pathstat pathdesk RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/python/ DESTINATION ${CMAKE_INSTALL_DATADIR}/pathstat/python FILES_MATCHING PATTERN "*.py"
        PATTERN "tests" EXCLUDE)
install(FILES ${manual_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${bash_completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME pathdesk)
install(FILES README.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
