# Compiles every header by itself, twice over, and all headers of a folder together: a build of target
# `headers`. What has a source of its own name is compiled by itself there already.

add_custom_target(headers)

# check_headers(TARGET): the headers of the target that is defined in this folder.
function(check_headers target)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.h)
  set(together "")
  set(sources "")
  foreach(header IN LISTS headers)
    string(APPEND together "#include \"${header}\"\n")
    cmake_path(REPLACE_EXTENSION header cpp OUTPUT_VARIABLE own)
    if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${own})
      file(CONFIGURE OUTPUT headers/${own} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
      list(APPEND sources ${CMAKE_CURRENT_BINARY_DIR}/headers/${own})
    endif()
  endforeach()
  file(CONFIGURE OUTPUT headers/${target}.cpp CONTENT "${together}")
  add_library(${target}Headers OBJECT EXCLUDE_FROM_ALL ${sources}
    ${CMAKE_CURRENT_BINARY_DIR}/headers/${target}.cpp)
  set_target_properties(${target}Headers PROPERTIES UNITY_BUILD OFF AUTOMOC OFF)
  target_link_libraries(${target}Headers PRIVATE ${ARGN})
  target_compile_options(${target}Headers PRIVATE -O0 -g0) # only read, never run
  target_include_directories(${target}Headers PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  add_dependencies(headers ${target}Headers)
endfunction()
