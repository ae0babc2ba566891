# One interface target carries what every part of Tallyroom is compiled with.
add_library(tallyroom_settings INTERFACE)
target_compile_options(tallyroom_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Woverloaded-virtual -Werror=switch)
target_compile_definitions(tallyroom_settings INTERFACE TALLYROOM_VERSION="${PROJECT_VERSION}")

# Fully optimised or instrumented, g++ 12 takes the standard library's inlined code for faults of ours. The
# development build keeps these warnings, and CI keeps it free of them.
if(CMAKE_BUILD_TYPE STREQUAL "Release" OR TALLYROOM_SANITIZE)
  target_compile_options(tallyroom_settings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-stringop-overflow;-Wno-array-bounds;-Wno-restrict>)
endif()

option(TALLYROOM_WARNINGS_AS_ERRORS "Stop at the first warning" OFF)
if(TALLYROOM_WARNINGS_AS_ERRORS)
  target_compile_options(tallyroom_settings INTERFACE -Werror)
endif()

if(TALLYROOM_SANITIZE)
  target_compile_options(tallyroom_settings INTERFACE
    -fsanitize=${TALLYROOM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tallyroom_settings INTERFACE -fsanitize=${TALLYROOM_SANITIZE})
endif()

# The compiler cache and the fast linker are used where the machine has them.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()
find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
  target_link_options(tallyroom_settings INTERFACE -fuse-ld=mold)
endif()

# moc of Qt 6.4 stumbles over the standard library's <concepts>; it needs nothing of it.
set(CMAKE_AUTOMOC_MOC_OPTIONS -D_GLIBCXX_CONCEPTS)
