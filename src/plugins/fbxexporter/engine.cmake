# The export engine: settings loading, the export run and its timing, the exported skeleton and
# pose transform, the two scene writers and the export of takes without a body.
add_library(fbxexporter_engine STATIC
  exportsettings.cpp
  nufbxexporter.cpp
  keytiming.cpp
  framecheck.cpp
  fbxglue.cpp
  skeletondefinition.cpp
  posetransformfbx.cpp
  channelkeying.cpp
  fbxexporterlocal.cpp
  fbxexporterglobal.cpp
  objectexport.cpp
)
set_target_properties(fbxexporter_engine PROPERTIES AUTOMOC ON)
target_include_directories(fbxexporter_engine PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(fbxexporter_engine PUBLIC zavohost numath nutypes fbxscene fbxio Qt6::Core)
