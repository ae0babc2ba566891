# Where systems with RPM look for what Debian keeps elsewhere. CPack runs it on what it is about to pack.
if(CPACK_GENERATOR STREQUAL "RPM")
  file(GLOB folders ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/zsh)
  foreach(folder IN LISTS folders)
    file(RENAME ${folder}/vendor-completions ${folder}/site-functions)
  endforeach()
endif()
