# cmake -DROOT=<source root> -DWORK=<scratch dir> -DGENERATOR=<generator>
#       -DCXX=<compiler> -P run_embed.cmake
# Configures tests/embed (which add_subdirectory()s ROOT) with the optional
# parts off, builds its program and runs it. The build directory is kept, so
# that later runs only rebuild what changed.
foreach(var ROOT WORK GENERATOR CXX)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "run_embed.cmake: ${var} not set")
  endif()
endforeach()

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc})")
  endif()
endfunction()

run("configure" ${CMAKE_COMMAND} -S ${ROOT}/tests/embed -B ${WORK} -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DVARDA_ROOT=${ROOT}
    -DVARDA_BUILD_TESTS=OFF -DVARDA_BUILD_BENCH=OFF -DVARDA_BUILD_FUZZ=OFF -DVARDA_BUILD_TOOLS=OFF)
run("build" ${CMAKE_COMMAND} --build ${WORK} --target embed_host -j 2)
run("embed_host" ${WORK}/embed_host)
