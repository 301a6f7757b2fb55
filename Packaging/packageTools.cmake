# Read by cpack before it makes a package, and by scripts/make-package before it builds one. Without these two cpack
# would fail without a reason, or make a package that depends on no library and cannot be started.
foreach(tool file dpkg-shlibdeps)
  find_program(path_of_${tool} ${tool} NO_CACHE)
  if(NOT path_of_${tool})
    message(FATAL_ERROR "No package is made: \"${tool}\" is missing. The section [package] of packages.txt names what is needed.")
  endif()
endforeach()
