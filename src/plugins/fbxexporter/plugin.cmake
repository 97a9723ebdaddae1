# The Qt plug-in the host loads: factory, options page and plug-in metadata, over the engine.
add_library(fbxexporter MODULE
  fbxexporter.h
  fbxexporterfactory.h
  fbxexporterfactory.cpp
  fbxexporteroptionspage.h
  fbxexporteroptionspage.cpp
)
set_target_properties(fbxexporter PROPERTIES
  AUTOMOC ON
  # Installed under <libdir>/zavo/plugins/exporters; libzavohost.so lies in <libdir>.
  INSTALL_RPATH "$ORIGIN/../../.."
)
target_include_directories(fbxexporter PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(fbxexporter PRIVATE fbxexporter_engine zavohost Qt6::Widgets)

# Hidden visibility keeps our classes private, but the standard library's templates (the maps
# of QMap, say) and the linker's own markers would still leave; the version script keeps
# everything but Qt's plug-in entry points inside the library.
set(FBXEXPORTER_VERSION_SCRIPT "${CMAKE_CURRENT_BINARY_DIR}/fbxexporter.map")
file(WRITE "${FBXEXPORTER_VERSION_SCRIPT}"
  "{\n  global:\n    qt_plugin_instance;\n    qt_plugin_query_metadata_v2;\n  local:\n    *;\n};\n")
target_link_options(fbxexporter PRIVATE
  "LINKER:--version-script=${FBXEXPORTER_VERSION_SCRIPT}"
  "LINKER:--no-undefined")
set_property(TARGET fbxexporter APPEND PROPERTY LINK_DEPENDS "${FBXEXPORTER_VERSION_SCRIPT}")

install(TARGETS fbxexporter LIBRARY DESTINATION "${ZAVO_PLUGIN_INSTALL_DIR}")
