# One target a folder: merro_library(name SOURCES … DEPENDS … [PRIVATE …]) makes merro_<name> and merro::<name>;
# merro_test(name SOURCES … DEPENDS …) makes a GoogleTest program whose tests CTest knows one by one.

add_library(merro_options INTERFACE)
target_compile_options(merro_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                       $<$<BOOL:${MERRO_WERROR}>:-Werror>)
if(MERRO_SANITIZE)
  target_compile_options(merro_options INTERFACE -fsanitize=${MERRO_SANITIZE} -fno-omit-frame-pointer
                         -fno-sanitize-recover=all)
  target_link_options(merro_options INTERFACE -fsanitize=${MERRO_SANITIZE})
endif()

find_program(MERRO_CCACHE ccache)
if(MERRO_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${MERRO_CCACHE})
endif()
find_package(Threads REQUIRED)

function(merro_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE" ${ARGN})
  add_library(merro_${name} STATIC ${ARG_SOURCES})
  add_library(merro::${name} ALIAS merro_${name})
  target_include_directories(merro_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(merro_${name} PUBLIC ${ARG_DEPENDS}
                        PRIVATE $<BUILD_INTERFACE:merro_options> ${ARG_PRIVATE})
endfunction()

function(merro_program target)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE merro_options ${ARG_DEPENDS})
endfunction()

function(merro_test name)
  if(NOT BUILD_TESTING)
    return()
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  merro_program(test_${name} SOURCES ${ARG_SOURCES} DEPENDS ${ARG_DEPENDS} GTest::gmock GTest::gtest_main)
  # Optimising the tests themselves would take longer than they run.
  target_compile_options(test_${name} PRIVATE -O0 -g1)
  gtest_discover_tests(test_${name} TEST_PREFIX ${name}: DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300)
endfunction()
