# Installs the build tree to a fresh prefix, moves the prefix, and builds and runs the consumer there:
# first through find_package, then through pkg-config.

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

run("${prefix}/bin/morvaai" version)
