# Completes the staged tree of each package before it is packed: change log and copyright notice, man pages
# compressed, and what lintian is to overlook. CPack runs this.

function(compress file)
  execute_process(COMMAND gzip -9n "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" key)
  set(package "${CPACK_DEBIAN_${key}_PACKAGE_NAME}")
  set(share "${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share")
  set(documents "${share}/doc/${package}")

  file(MAKE_DIRECTORY "${documents}")
  configure_file("${CPACK_MORVA_PACKAGING}/changelog" "${documents}/changelog.Debian" COPYONLY)
  compress("${documents}/changelog.Debian")
  configure_file("${CPACK_MORVA_PACKAGING}/copyright" "${documents}/copyright" COPYONLY)
  if(EXISTS "${CPACK_MORVA_PACKAGING}/lintian/${package}")
    configure_file("${CPACK_MORVA_PACKAGING}/lintian/${package}" "${share}/lintian/overrides/${package}" COPYONLY)
  endif()

  file(GLOB_RECURSE pages "${share}/man/*.[1-9]")
  foreach(page IN LISTS pages)
    compress("${page}")
  endforeach()
endforeach()
