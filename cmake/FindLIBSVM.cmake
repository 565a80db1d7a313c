# libsvm ships no package file of its own that every system has. Defines LIBSVM::svm.
find_path(LIBSVM_INCLUDE_DIR svm.h PATH_SUFFIXES libsvm)
find_library(LIBSVM_LIBRARY NAMES svm libsvm)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(LIBSVM REQUIRED_VARS LIBSVM_LIBRARY LIBSVM_INCLUDE_DIR)
if(LIBSVM_FOUND AND NOT TARGET LIBSVM::svm)
  add_library(LIBSVM::svm UNKNOWN IMPORTED)
  set_target_properties(LIBSVM::svm PROPERTIES
    IMPORTED_LOCATION "${LIBSVM_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${LIBSVM_INCLUDE_DIR}")
endif()
mark_as_advanced(LIBSVM_INCLUDE_DIR LIBSVM_LIBRARY)
