# The Debian packages, one for each component of the installed tree; scripts/package makes them. What belongs to a
# package beside its files stands in packaging/: its description, the change log, the copyright notice, the
# triggers of a package with libraries, and what lintian is to overlook, with the reason.
set(MORVA_PACKAGE_MAINTAINER "The morvaai project <maintainers@morvaai.example>" CACHE STRING
  "Who answers for the packages: a name and an address of mail")
set(packaging "${PROJECT_SOURCE_DIR}/packaging")

# The version of the packages is the newest in the change log.
file(STRINGS "${packaging}/changelog" change LIMIT_COUNT 1)
if(NOT change MATCHES "^morvaai \\(([0-9.]+)-([0-9]+)\\)" OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "packaging/changelog has to begin with an entry for version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE "${CMAKE_MATCH_2}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME morvaai)
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_THREADS 0)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${packaging}/finish.cmake")
set(CPACK_MORVA_PACKAGING "${packaging}")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE morvaai)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${MORVA_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries of the other packages, which `CPACK_COMPONENT_..._DEPENDS` names.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

# The trigger has the loader's cache renewed. CPack would write scripts for that too, but not where a package has its
# own; ones that do not exist are left out.
set(library_control "${packaging}/triggers" "${packaging}/none/postinst" "${packaging}/none/postrm")
set(component_control "${packaging}/none/postinst" "${packaging}/none/postrm")
set(python_control "${packaging}/python/postinst" "${packaging}/python/prerm")

# morva_package(COMPONENT NAME SECTION [ANY_MACHINE] [NEEDS COMPONENT...] [CONTROL FILE...] [DEPENDS TEXT]
# [RECOMMENDS TEXT] [SUGGESTS TEXT]): a package with the files of the component. NEEDS are components whose packages it
# needs in the same version; CONTROL are scripts and triggers. ANY_MACHINE: the same for all architectures.
function(morva_package component name section)
  cmake_parse_arguments(PARSE_ARGV 3 package "ANY_MACHINE" "DEPENDS;RECOMMENDS;SUGGESTS" "NEEDS;CONTROL")
  string(TOUPPER "${component}" key)
  file(READ "${packaging}/descriptions/${name}" description)
  string(STRIP "${description}" description)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME "${name}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${package_CONTROL}" PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DEPENDS "${package_NEEDS}" PARENT_SCOPE)
  foreach(relation IN ITEMS DEPENDS RECOMMENDS SUGGESTS)
    set(CPACK_DEBIAN_${key}_PACKAGE_${relation} "${package_${relation}}" PARENT_SCOPE)
  endforeach()
  if(package_ANY_MACHINE)
    set(CPACK_DEBIAN_${key}_PACKAGE_ARCHITECTURE all PARENT_SCOPE)
  endif()
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
endfunction()

set(CPACK_COMPONENTS_ALL "")
morva_package(library libmorvaai3 libs NEEDS host CONTROL ${library_control})
morva_package(host libmorvahost3 libs NEEDS data CONTROL ${library_control} SUGGESTS libmorvahost3-pdf)
if(MORVA_WITH_PDF)
  morva_package(host_pdf libmorvahost3-pdf libs NEEDS host CONTROL ${component_control} DEPENDS poppler-data)
endif()
morva_package(data morvaai-data text ANY_MACHINE)
morva_package(program morvaai text NEEDS library RECOMMENDS libmorvahost3-pdf)
morva_package(development libmorvaai-dev libdevel NEEDS library host c)
morva_package(c libmorvaai-c1 libs NEEDS library CONTROL ${library_control})
morva_package(python python3-morvaai python ANY_MACHINE NEEDS c CONTROL ${python_control}
  DEPENDS "python3:any, python3-numpy")
include(CPack)
