# Installs the library into a directory and builds another project against it, in both ways.
#     cmake -DBUILD=... -DWORK=... -DSOURCE=... -DRECORDING=... -DCOMPILER=... -DGENERATOR=...
#           [-DTOOLCHAIN=... -DWINDOWS_PREFIX=... -DEMULATOR=... -DSUFFIX=...] -P ...
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)

function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE code)
  if(code)
    message(FATAL_ERROR "${ARGV}: ${code}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Programs for Windows find the library beside them.
function(expect_length program)
  if(EMULATOR)
    file(GLOB libraries ${prefix}/bin/*.dll)
    get_filename_component(directory ${program} DIRECTORY)
    file(COPY ${libraries} DESTINATION ${directory})
  endif()
  run(${EMULATOR} ${program}${SUFFIX} ${RECORDING})
  if(NOT output MATCHES "^2400\r?\n$")
    message(FATAL_ERROR "${program} printed ${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

if(TOOLCHAIN)
  # It looks for packages in its own prefix only.
  file(GLOB_RECURSE package ${prefix}/MediaAccessorConfig.cmake)
  get_filename_component(package_dir ${package} DIRECTORY)
  set(configuration -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DMEDIA_ACCESSOR_WINDOWS_PREFIX=${WINDOWS_PREFIX}
    -DMediaAccessor_DIR=${package_dir})
else()
  set(configuration -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${prefix})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR}
  ${configuration})
run(${CMAKE_COMMAND} --build ${WORK}/build)
expect_length(${WORK}/build/consumer)

file(GLOB_RECURSE pc ${prefix}/MediaAccessor.pc)
get_filename_component(pc_dir ${pc} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_dir})
run(pkg-config --cflags --libs MediaAccessor)
separate_arguments(flags UNIX_COMMAND "${output}")
get_filename_component(libdir ${pc_dir} DIRECTORY)
run(${COMPILER} -std=c++17 ${SOURCE}/consumer.cpp ${flags} -Wl,-rpath,${libdir} -o ${WORK}/by_pkg_config${SUFFIX})
expect_length(${WORK}/by_pkg_config)

run(${EMULATOR} ${prefix}/bin/media-accessor${SUFFIX} info ${RECORDING})
