# A floor is one static library with one test program that links only that floor and what lies below it, so that a
# call upwards does not link. The wings add their files with target_sources(); tools/check-layers.py reads the floors
# from those lines.
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

# tessimar_test_program(NAME LIBRARIES...): a test program NAME whose cases CTest runs one by one.
function(tessimar_test_program name)
  if(NOT BUILD_TESTING)
    return()
  endif()
  add_executable(${name})
  target_link_libraries(${name} PRIVATE ${ARGN} GTest::gtest)
  if(NOT MSVC)
    # What is tested is optimised as ever; the tests themselves cost a quarter less of the build this way.
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# tessimar_floor(NAME LIBRARIES...): the library tessimar_NAME on top of LIBRARIES, and its test program NAME_test.
function(tessimar_floor name)
  add_library(tessimar_${name} STATIC)
  target_include_directories(tessimar_${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(tessimar_${name} PUBLIC ${ARGN})
  tessimar_test_program(${name}_test tessimar_${name} tessimar_test_support)
endfunction()
