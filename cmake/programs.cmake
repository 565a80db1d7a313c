# tessimar_program(NAME): installs the program NAME, tells it the version, and puts a link to it into build/bin, where the
# system has links.
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
function(tessimar_program name)
  target_compile_definitions(${name} PRIVATE TESSIMAR_VERSION="${PROJECT_VERSION}")
  install(TARGETS ${name})
  file(RELATIVE_PATH folder "${PROJECT_BINARY_DIR}/bin" "${CMAKE_CURRENT_BINARY_DIR}")
  file(CREATE_LINK "${folder}/${name}${CMAKE_EXECUTABLE_SUFFIX}"
       "${PROJECT_BINARY_DIR}/bin/${name}${CMAKE_EXECUTABLE_SUFFIX}" RESULT ignored SYMBOLIC)
endfunction()
