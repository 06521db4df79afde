# Options that every target of this project has, and the functions that make a layer of src/ and a test.

add_library(tarn_options INTERFACE)
target_compile_features(tarn_options INTERFACE cxx_std_20)
# The library never sees the system's COM headers: their macros rename its methods.
target_compile_definitions(tarn_options INTERFACE TARN_PLAIN_COM_TYPES)
target_compile_options(tarn_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                       $<$<BOOL:${TARN_DEVELOPER}>:-Werror>
                       # GCC 12 takes std::string's own copies for overlapping ones.
                       $<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict>)
if(TARN_SANITIZE)
  # Objects are called across modules whose type information is hidden from each other, as COM has it: no vptr check.
  target_compile_options(tarn_options INTERFACE -fsanitize=${TARN_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                         -fno-omit-frame-pointer)
  target_link_options(tarn_options INTERFACE -fsanitize=${TARN_SANITIZE})
endif()
include(Hardening)
find_package(Threads REQUIRED)
target_link_libraries(tarn_options INTERFACE Threads::Threads)

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# tarn_layer(NAME SOURCES … DEPENDS …): one folder of src/, a static library. DEPENDS are the folders it may include.
function(tarn_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;DEPENDS")
  add_library(tarn_${name} STATIC ${arg_SOURCES})
  target_include_directories(tarn_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  list(TRANSFORM arg_DEPENDS PREPEND tarn_)
  target_link_libraries(tarn_${name} PUBLIC ${arg_DEPENDS} PRIVATE tarn_options)
endfunction()

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/tmp)
# tarn_test(NAME [DEATH_TESTS] SOURCES … LIBRARIES …): a GoogleTest program. Link-time fakes of the platform layer go
# into SOURCES: an object file of the program comes before the layer's archive.
function(tarn_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "DEATH_TESTS" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} tarn_options GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name})
  # The C library fills new memory with a pattern, so that a read of uninitialised memory is noticed. Each build has its
  # own temporary folder, so that the tests of two builds do not share files.
  set_tests_properties(${name} PROPERTIES TIMEOUT 300
                       ENVIRONMENT "MALLOC_PERTURB_=165;TEST_TMPDIR=${PROJECT_BINARY_DIR}/tmp")
  if(arg_DEATH_TESTS)
    # They start the program again and catch what it prints in the temporary folder: one program at a time.
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK death_tests)
  endif()
endfunction()

# The same sources give the same bytes, in whichever folder they are built.
if(NOT CMAKE_BUILD_TYPE STREQUAL Debug)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()
if(WIN32)
  add_link_options(-Wl,--no-insert-timestamp)
endif()
