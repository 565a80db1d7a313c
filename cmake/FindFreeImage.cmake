# FreeImage ships no package file of its own. Defines FreeImage::FreeImage.
find_path(FreeImage_INCLUDE_DIR FreeImage.h)
find_library(FreeImage_LIBRARY NAMES freeimage FreeImage)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FreeImage REQUIRED_VARS FreeImage_LIBRARY FreeImage_INCLUDE_DIR)
if(FreeImage_FOUND AND NOT TARGET FreeImage::FreeImage)
  add_library(FreeImage::FreeImage UNKNOWN IMPORTED)
  set_target_properties(FreeImage::FreeImage PROPERTIES
    IMPORTED_LOCATION "${FreeImage_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${FreeImage_INCLUDE_DIR}")
endif()
mark_as_advanced(FreeImage_INCLUDE_DIR FreeImage_LIBRARY)
