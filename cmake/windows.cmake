# trellion_on_windows(TARGET): what a program or library needs there beyond its sources, which know
# POSIX only. With g++ of mingw-w64.
enable_language(RC)

function(trellion_on_windows target)
  set(here ${PROJECT_SOURCE_DIR}/cmake/windows)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    target_sources(${target} PRIVATE ${here}/trellion.rc)  # names of files are UTF-8
    target_link_options(${target} PRIVATE -static)
  else()
    target_sources(${target} PRIVATE ${here}/posix.cpp)
    target_compile_options(${target} PUBLIC
      $<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${here}/posix.h>)
  endif()
endfunction()
