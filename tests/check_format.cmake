# cmake -DCLANG_FORMAT=<program> -DROOT=<source dir> -DBINARY=<build dir> -P check_format.cmake
# Fails when any of the project's own C++ sources differs from what the
# checked-in .clang-format makes of it. Fuzz seeds and build trees are not
# sources.
set(sources "")
foreach(dir src tools tests bench fuzz)
  file(GLOB_RECURSE found "${ROOT}/${dir}/*.cpp" "${ROOT}/${dir}/*.h")
  list(APPEND sources ${found})
endforeach()
list(FILTER sources EXCLUDE REGEX "^${ROOT}/fuzz/corpus/")
list(FILTER sources EXCLUDE REGEX "/build[^/]*/")
if(BINARY)
  string(REGEX REPLACE "([][+.*()^$?|\\\\])" "\\\\\\1" binary_re "${BINARY}")
  list(FILTER sources EXCLUDE REGEX "^${binary_re}/")
endif()
list(LENGTH sources count)
if(count EQUAL 0)
  message(FATAL_ERROR "no sources found under ${ROOT}")
endif()
execute_process(COMMAND "${CLANG_FORMAT}" --dry-run -Werror ${sources}
  WORKING_DIRECTORY "${ROOT}" RESULT_VARIABLE status ERROR_VARIABLE report)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "clang-format finds ${count} files not all formatted (run clang-format -i on them):\n${report}")
endif()
message(STATUS "${count} files formatted as .clang-format says")
