# Protection of what ships, because the server's bytes are hostile. TARN_HARDENING is the list of what this build type
# promises; the tests finder_module and dbi_module read it off the built files.
#
# The standard library's assertions are always on: they cost 0.3 % of the instructions of listing 10,000 cameras.
set(TARN_HARDENING library-assertions)
target_compile_definitions(tarn_options INTERFACE _GLIBCXX_ASSERTIONS)

# Not with a sanitizer, because it finds the same faults first and does not know the fortified functions.
if(NOT TARN_SANITIZE)
  list(APPEND TARN_HARDENING stack-protector)
  target_compile_options(tarn_options INTERFACE -fstack-protector-strong)
  # Named for the linker as well, because on Windows the checks live in a library of their own.
  target_link_options(tarn_options INTERFACE -fstack-protector-strong)

  # The optimiser is needed, because it is what knows the sizes of objects.
  if(CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
      set(level 2)
    else()
      set(level 3)
    endif()
    list(APPEND TARN_HARDENING fortify)
    target_compile_options(tarn_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level})
  endif()

  if(WIN32)
    # A movable base, 64-bit addresses and unexecutable data are this linker's defaults, and stack pages are always
    # probed. No control-flow protection: Windows reads it from tables that this compiler does not write.
    list(APPEND TARN_HARDENING high-entropy movable-base no-executable-data)
  else()
    list(APPEND TARN_HARDENING control-flow)
    target_compile_options(tarn_options INTERFACE -fstack-clash-protection -fcf-protection=full)
    # The linker marks a module for the shadow stack only where the system's start-up files are marked too. Debian's
    # crti.o is not, so the mark is forced, because crti.o changes no return address. It has no landing pads either, so
    # the mark for those is left to the linker.
    target_link_options(tarn_options INTERFACE -Wl,-z,shstk)
  endif()
endif()

if(NOT WIN32)
  list(APPEND TARN_HARDENING read-only-relocations no-executable-stack separate-code)
  target_link_options(tarn_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack,-z,separate-code)
endif()
