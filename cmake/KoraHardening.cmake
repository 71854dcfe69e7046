# Hardens the targets of a folder and of those below as Debian hardens its packages. Debug builds stay as they are: the
# checked calls of the C library need optimisation, and sanitizers look at more.
#
# usage: kora_harden()   before the targets
macro(kora_harden)
  find_program(DPKG_BUILDFLAGS dpkg-buildflags)
  if(DPKG_BUILDFLAGS AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT KORA_SANITIZE AND NOT KORA_COVERAGE)
    foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
      # Optimisation and debugging are matters of the build type.
      execute_process(
        COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all "DEB_CXXFLAGS_MAINT_STRIP=-g -O2"
                ${DPKG_BUILDFLAGS} --get ${kind}
        WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_VARIABLE hardening_flags OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
      separate_arguments(hardening_flags UNIX_COMMAND "${hardening_flags}")
      if(kind STREQUAL "LDFLAGS")
        add_link_options(${hardening_flags})
      else()
        add_compile_options(${hardening_flags})
      endif()
    endforeach()
  endif()
endmacro()
