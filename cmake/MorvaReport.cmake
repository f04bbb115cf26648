# The page of `--report`, made of tools/report by Node.js and its packages, which `scripts/setup` installs. Where they
# are missing everything else builds, and the program says that it has no reports.
set(MORVA_WITH_REPORT AUTO CACHE STRING "Build the page of reports: ON, OFF, or AUTO where its packages are installed")
set_property(CACHE MORVA_WITH_REPORT PROPERTY STRINGS AUTO ON OFF)

# morva_report_template(VARIABLE): the source file that holds the page, or one that holds none.
function(morva_report_template variable)
  set(sources "${PROJECT_SOURCE_DIR}/tools/report")
  set(${variable} "${PROJECT_SOURCE_DIR}/tools/morvaai/report/report_template_absent.cpp" PARENT_SCOPE)
  if(NOT MORVA_WITH_REPORT AND NOT MORVA_WITH_REPORT STREQUAL "AUTO")
    return()
  endif()
  find_program(MORVA_NODE NAMES node nodejs)
  if(NOT MORVA_NODE OR NOT EXISTS "${sources}/node_modules/.package-lock.json")
    set(missing "Node.js packages of tools/report (scripts/setup --report installs them)")
    if(NOT MORVA_WITH_REPORT STREQUAL "AUTO")
      message(FATAL_ERROR "Reports cannot be built without the ${missing}")
    endif()
    message(STATUS "Reports (--report) are left out: no ${missing}")
    return()
  endif()
  set(made "${PROJECT_BINARY_DIR}/report")
  file(GLOB_RECURSE parts CONFIGURE_DEPENDS "${sources}/src/*")
  add_custom_command(
    OUTPUT "${made}/report_template.cpp" BYPRODUCTS "${made}/template.html"
    COMMAND "${MORVA_NODE}" "${sources}/build.mjs" "${made}"
    DEPENDS ${parts} "${sources}/build.mjs" "${sources}/page.html" "${sources}/package-lock.json"
    COMMENT "Bundling the page of reports" VERBATIM)
  set(${variable} "${made}/report_template.cpp" PARENT_SCOPE)
endfunction()
