# Installs the library into a directory and builds another project against it, in both ways.
#     cmake -DBUILD=... -DWORK=... -DSOURCE=... -DRECORDING=... -DCOMPILER=... -DGENERATOR=... -P ...
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)

function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE code)
  if(code)
    message(FATAL_ERROR "${ARGV}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_length program)
  run(${program} ${RECORDING})
  if(NOT output STREQUAL "2400\n")
    message(FATAL_ERROR "${program} printed ${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR}
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/build)
expect_length(${WORK}/build/consumer)

file(GLOB_RECURSE pc ${prefix}/MediaAccessor.pc)
get_filename_component(pc_dir ${pc} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(pkg-config --cflags --libs MediaAccessor)
separate_arguments(flags UNIX_COMMAND "${output}")
get_filename_component(libdir ${pc_dir} DIRECTORY)
run(${COMPILER} -std=c++17 ${SOURCE}/consumer.cpp ${flags} -Wl,-rpath,${libdir} -o ${WORK}/by_pkg_config)
expect_length(${WORK}/by_pkg_config)

run(${prefix}/bin/media-accessor info ${RECORDING})
