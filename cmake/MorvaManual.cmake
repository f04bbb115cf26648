# The manual pages and the files by which shells complete command lines: made of sources in docs/man/ and completions/
# and of what the program says of its commands and options, so that these cannot be out of step. The build tree is laid
# out like the installed one: `MANPATH=build/release/share/man man morvaai-learn` shows a page of it.
morva_command_of(morvaai-tool morvaai_command)
set(manual "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/man")
set(completions "${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/completions")
file(GLOB manual_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/man/*" "${PROJECT_SOURCE_DIR}/completions/*")

add_custom_command(OUTPUT "${PROJECT_BINARY_DIR}/manual.stamp"
  COMMAND "${CMAKE_COMMAND}" -E rm -rf "${manual}" "${completions}"
  COMMAND /usr/bin/python3 -B "${PROJECT_SOURCE_DIR}/docs/man/render" "${morvaai_command}" "${manual}"
    --docdir "${CMAKE_INSTALL_FULL_DOCDIR}"
  COMMAND /usr/bin/python3 -B "${PROJECT_SOURCE_DIR}/completions/render" "${morvaai_command}" "${completions}"
  COMMAND "${CMAKE_COMMAND}" -E touch "${PROJECT_BINARY_DIR}/manual.stamp"
  DEPENDS morvaai-tool ${manual_sources}
  COMMENT "Making the manual pages and shell completions"
  VERBATIM)
add_custom_target(morvaai-manual ALL DEPENDS "${PROJECT_BINARY_DIR}/manual.stamp")

install(DIRECTORY "${manual}/" DESTINATION "${CMAKE_INSTALL_MANDIR}" COMPONENT program)
install(FILES "${completions}/morvaai"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT program)
install(FILES "${completions}/_morvaai"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT program)
install(FILES "${completions}/morvaai.fish"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT program)
install(DIRECTORY docs/json DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT program)
install(FILES docs/command-line.md docs/box-format.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT program)
