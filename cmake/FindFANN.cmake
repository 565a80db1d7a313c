# FANN ships no package file of its own that every system has. Defines FANN::doublefann, the library of 64-bit numbers.
find_path(FANN_INCLUDE_DIR doublefann.h)
find_library(FANN_LIBRARY NAMES doublefann)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FANN REQUIRED_VARS FANN_LIBRARY FANN_INCLUDE_DIR)
if(FANN_FOUND AND NOT TARGET FANN::doublefann)
  add_library(FANN::doublefann UNKNOWN IMPORTED)
  set_target_properties(FANN::doublefann PROPERTIES
    IMPORTED_LOCATION "${FANN_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${FANN_INCLUDE_DIR}")
endif()
mark_as_advanced(FANN_INCLUDE_DIR FANN_LIBRARY)
