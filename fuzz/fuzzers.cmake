# Included by the top-level project: builds the libFuzzer targets with clang
# (a separate sanitizer build of fuzz/) and runs each briefly under CTest.
find_program(VARDA_CLANGXX NAMES clang++ clang++-14)
find_program(VARDA_CLANG NAMES clang clang-14)
if(NOT VARDA_CLANGXX OR NOT VARDA_CLANG)
  message(STATUS "clang not found: fuzz targets are not built")
  return()
endif()

include(ExternalProject)
set(VARDA_FUZZ_BINARY_DIR ${PROJECT_BINARY_DIR}/fuzz-build)
ExternalProject_Add(varda_fuzzers
  SOURCE_DIR ${PROJECT_SOURCE_DIR}/fuzz
  BINARY_DIR ${VARDA_FUZZ_BINARY_DIR}
  CMAKE_ARGS -DCMAKE_C_COMPILER=${VARDA_CLANG} -DCMAKE_CXX_COMPILER=${VARDA_CLANGXX}
             -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQt5_DIR=${Qt5_DIR}
  BUILD_ALWAYS ON
  INSTALL_COMMAND "")

set(VARDA_FUZZ_RUNS 20000 CACHE STRING "libFuzzer runs per target under CTest")

# Registers one short fuzzing run as a test. New inputs go to a scratch
# directory in the build tree; the checked-in seeds are read only.
function(varda_fuzz_target name)
  set(work ${PROJECT_BINARY_DIR}/fuzz-work/${name})
  file(MAKE_DIRECTORY ${work})
  set(seeds "")
  if(EXISTS ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    set(seeds ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
  endif()
  # Leaks are looked for once, at exit (-detect_leaks=0 only stops the check
  # after every input, which Qt's growing caches would trigger constantly).
  add_test(NAME ${name}
    COMMAND ${VARDA_FUZZ_BINARY_DIR}/${name} -runs=${VARDA_FUZZ_RUNS} -max_len=4096
            -detect_leaks=0 -print_final_stats=0 ${work} ${seeds})
  set_tests_properties(${name} PROPERTIES LABELS fuzz TIMEOUT 600
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;HOME=${work};ASAN_OPTIONS=detect_leaks=1:abort_on_error=1;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/scripts/lsan.supp;UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
endfunction()

include(${PROJECT_SOURCE_DIR}/fuzz/targets.cmake)
