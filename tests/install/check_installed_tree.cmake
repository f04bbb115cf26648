# Installs the build tree to a fresh prefix, moves the prefix, and builds and runs the consumer there:
# first through find_package, then through pkg-config. Then the examples, as their users do.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nfailed with ${status}:\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/first")
file(RENAME "${WORK_DIR}/first" "${WORK_DIR}/prefix")
set(prefix "${WORK_DIR}/prefix")
set(ENV{MORVA_DICT_PATH} "")

set(flags "")
if(SANITIZE)
  set(flags "-fsanitize=address,undefined")
endif()
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/consumer" -B "${WORK_DIR}/cmake" -G Ninja
  "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${flags}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/cmake")
run("${WORK_DIR}/cmake/consumer")

find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig")
execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs morvaai
  OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(options UNIX_COMMAND "${options}")
separate_arguments(flags UNIX_COMMAND "${flags}")
run("${CXX}" ${flags} "${SOURCE_DIR}/consumer/main.cpp" -o "${WORK_DIR}/by_pkg_config" ${options}
  "-Wl,-rpath,${prefix}/${LIBDIR}")
run("${WORK_DIR}/by_pkg_config")

# The same in C, where no C++ compiler is asked for; under sanitizers it takes one.
if(NOT SANITIZE)
  run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/../c/consumer" -B "${WORK_DIR}/cmake_c" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_C_COMPILER=${CC}")
  run("${CMAKE_COMMAND}" --build "${WORK_DIR}/cmake_c")
  run("${WORK_DIR}/cmake_c/consumer")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs morvaai_c
    OUTPUT_VARIABLE options OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(options UNIX_COMMAND "${options}")
  run("${CC}" "${SOURCE_DIR}/../c/consumer/main.c" -o "${WORK_DIR}/c_by_pkg_config" ${options}
    "-Wl,-rpath,${prefix}/${LIBDIR}")
  run("${WORK_DIR}/c_by_pkg_config")
endif()

run("${prefix}/bin/morvaai" version)

# The loader may know the libraries by a link to their folder, at another depth: data is found all the same.
file(MAKE_DIRECTORY "${WORK_DIR}/elsewhere/deeper/still")
file(CREATE_LINK "${prefix}/${LIBDIR}" "${WORK_DIR}/elsewhere/deeper/still/lib" SYMBOLIC)
set(ENV{LD_LIBRARY_PATH} "${WORK_DIR}/elsewhere/deeper/still/lib")
execute_process(COMMAND "${prefix}/bin/morvaai" version OUTPUT_VARIABLE told COMMAND_ERROR_IS_FATAL ANY)
if(told MATCHES "not found")
  message(FATAL_ERROR "Loaded through a link, the libraries do not find their data:\n${told}")
endif()

# Under sanitizers they would take as long again as all of the above, and say nothing new.
if(NOT SANITIZE)
  run("${CMAKE_COMMAND}" -S "${prefix}/share/doc/morvaai/examples" -B "${WORK_DIR}/examples" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}")
  # One of each kind; the others differ in nothing that an installed tree could lack.
  run("${CMAKE_COMMAND}" --build "${WORK_DIR}/examples" --target example-fingerprint example-own_host_library)
  set(samples "${SOURCE_DIR}/../../samples")
  run("${WORK_DIR}/examples/fingerprint" "${samples}/budget.xlsx" "${samples}/harbour-report.docx")
  run("${WORK_DIR}/examples/own_host_library/own_host_library" "${samples}/harbour-report.docx")
endif()
