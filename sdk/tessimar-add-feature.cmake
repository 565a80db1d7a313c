# tessimar_add_feature(NAME SOURCES...): builds the feature plug-in FeatureNAME, a target of that name too, as the file
# that the workbench looks for (FeatureNAME.so, on Windows FeatureNAME.dll). Only the interface is exported.
function(tessimar_add_feature name)
  add_library(Feature${name} MODULE ${ARGN})
  target_link_libraries(Feature${name} PRIVATE tessimar::feature_plugin)
  set_target_properties(Feature${name} PROPERTIES PREFIX ""
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()
