# How this project's targets are made: one place for language level, warnings,
# visibility and sanitizers, so that every target has the same.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

# Compile options of everything we build ourselves; consumers see none of them.
add_library(qx_options INTERFACE)
target_compile_options(qx_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
  -Wformat-nonliteral -Werror=format-security
  -ffp-contract=off)
# The checks that a sanitizer adds mislead g++ into warnings about code that
# cannot be reached; the builds without are the ones to judge by.
if(QX_WERROR AND NOT QX_SANITIZE)
  target_compile_options(qx_options INTERFACE -Werror)
endif()
if(QX_SANITIZE)
  target_compile_options(qx_options INTERFACE
    -fsanitize=${QX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  target_link_options(qx_options INTERFACE -fsanitize=${QX_SANITIZE})
endif()
if(QX_FUZZ)
  # The fuzzer is led by the coverage of all code, the library's first.
  target_compile_options(qx_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# qx_add_library(NAME): a shared library NAME with the alias qxsystem::NAME.
# Its sources and headers are added by the directories that own them. An object
# library NAME_objects serves tests of private helpers.
function(qx_add_library name)
  add_library(${name} SHARED)
  add_library(qxsystem::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    VERIFY_INTERFACE_HEADER_SETS ON)
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  if(NOT QX_SANITIZE)  # whose runtime comes with the program
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:qx_options>)
endfunction()

# qx_sources(LIBRARY SUBSYSTEM STEM...): adds qxsystem/SUBSYSTEM/STEM.cpp and,
# where it exists, STEM.h as an installed header. A stem that ends in
# _private has no installed header.
function(qx_sources library subsystem)
  foreach(stem IN LISTS ARGN)
    set(path ${PROJECT_SOURCE_DIR}/qxsystem/${subsystem}/${stem})
    if(EXISTS ${path}.cpp)
      target_sources(${library} PRIVATE ${path}.cpp)
    endif()
    if(EXISTS ${path}.h AND NOT stem MATCHES "_private$")
      target_sources(${library} PUBLIC FILE_SET HEADERS
        BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${path}.h)
    endif()
    if(NOT EXISTS ${path}.cpp AND NOT EXISTS ${path}.h)
      message(FATAL_ERROR "qx_sources: neither ${path}.cpp nor ${path}.h exists")
    endif()
  endforeach()
endfunction()

# qx_add_test(SUBSYSTEM/STEM): the program tests/SUBSYSTEM/STEM_test.cpp, its
# test cases known to CTest one by one. Its main function is that of
# tests/support.
function(qx_add_test path)
  string(REPLACE "/" "_" name ${path}_test)
  add_executable(${name} ${PROJECT_SOURCE_DIR}/tests/${path}_test.cpp)
  target_link_libraries(${name} PRIVATE qxsystem qx_options qx_test_main GTest::gtest)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  gtest_discover_tests(${name} TEST_PREFIX "${path}." DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT 300)
endfunction()
