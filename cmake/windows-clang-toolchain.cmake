# Builds the library for 64-bit Windows with clang and lld, on top of the mingw-w64 compiler's headers and libraries:
#   cmake -S . -B build/windows-clang -G Ninja -DTARN_DEVELOPER=OFF \
#         -DCMAKE_TOOLCHAIN_FILE=cmake/windows-clang-toolchain.cmake
# Debian: apt-get install clang lld g++-mingw-w64-x86-64-posix
include(${CMAKE_CURRENT_LIST_DIR}/windows-toolchain.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include/c++ OUTPUT_VARIABLE cxx_headers
                OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(gcc_folder ${cxx_headers}/../.. ABSOLUTE)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)

# Warns of GNU extensions, so that a build with warnings as errors shows that there are none.
string(APPEND CMAKE_CXX_FLAGS_INIT " -Wgnu")

# clang does not find the other compiler's folder by itself, because Debian names it after the thread variant.
string(APPEND CMAKE_CXX_FLAGS_INIT " -isystem ${cxx_headers} -isystem ${cxx_headers}/x86_64-w64-mingw32")
# The other compiler's library holds a function of std::type_info that its header defines inline as well.
foreach(kind EXE SHARED MODULE)
  string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT " -fuse-ld=lld -pthread -B${gcc_folder} -L${gcc_folder}"
                " -Wl,--allow-multiple-definition")
endforeach()
