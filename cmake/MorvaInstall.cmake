# What an installed tree holds: the libraries, the public headers, the program, the dictionary, and the
# CMake package and pkg-config file through which others find them. Everything belongs to a component,
# of which cmake/MorvaPackages.cmake makes a package each; `cmake --install` takes all.
include(CMakePackageConfigHelpers)

get_property(morva_libraries GLOBAL PROPERTY MORVA_LIBRARIES)
set(morva_component_of_morvaai library)
set(morva_component_of_morvaai_c c)
foreach(library IN LISTS morva_libraries)
  set(component host)
  if(DEFINED morva_component_of_${library})
    set(component ${morva_component_of_${library}})
  endif()
  install(TARGETS ${library} EXPORT morvaai-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${component} NAMELINK_COMPONENT development)
endforeach()
install(DIRECTORY src/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/morvaai" COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
install(EXPORT morvaai-targets NAMESPACE morvaai::
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/morvaai" COMPONENT development)

file(WRITE "${PROJECT_BINARY_DIR}/morvaai-config.cmake"
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/morvaai-targets.cmake\")\n")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/morvaai-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/morvaai-config.cmake"
              "${PROJECT_BINARY_DIR}/morvaai-config-version.cmake"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/morvaai" COMPONENT development)

file(RELATIVE_PATH MORVA_PREFIX_FROM_PC "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
foreach(library morvaai morvaai_c)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/${library}.pc.in" "${PROJECT_BINARY_DIR}/${library}.pc" @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/morvaai.pc" "${PROJECT_BINARY_DIR}/morvaai_c.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
# Packages say this in their own form, packaging/copyright.
install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT licence)

# The Python module is the same for every version of Python, and for every machine.
set(MORVA_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python module goes, below the prefix")
install(DIRECTORY python/morvaai DESTINATION "${MORVA_PYTHON_DIR}" COMPONENT python
  FILES_MATCHING PATTERN "*.py" PATTERN py.typed PATTERN __pycache__ EXCLUDE)
