# The plug-in as hosts on macOS load it: one bundle with the camera library inside, unless that is
# the system's. It exports what the library of other systems exports, spelt as Mach-O spells it.

file(READ ${PROJECT_SOURCE_DIR}/cmake/qvr_touch.map exports)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/cmake/qvr_touch.map)
string(REGEX REPLACE "^.*global:(.*)local:.*$" "\\1" exports "${exports}")
string(REGEX MATCHALL "[A-Za-z0-9_*]+" exports "${exports}")
list(TRANSFORM exports PREPEND "_")
list(JOIN exports "\n" exports)
set(exported_symbols ${CMAKE_CURRENT_BINARY_DIR}/exported_symbols.txt)
file(CONFIGURE OUTPUT ${exported_symbols} CONTENT "@exports@\n" @ONLY)

if(NOT CMAKE_CROSSCOMPILING)
    set(QVR_MACOS_MINIMUM ${CMAKE_OSX_DEPLOYMENT_TARGET})
endif()
add_library(qvr_touch_bundle MODULE ${objects})
target_link_libraries(qvr_touch_bundle PRIVATE json11::json11 ${system_libraries})
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_sources(qvr_touch_bundle PRIVATE ${CMAKE_CURRENT_LIST_DIR}/cpu_model.c)
    target_link_libraries(qvr_touch_bundle PRIVATE qvr_flags)
endif()
if(TARGET realsense_objects)
    target_link_libraries(qvr_touch_bundle PRIVATE realsense_objects)
else()
    target_link_libraries(qvr_touch_bundle PRIVATE realsense)
endif()
target_link_options(qvr_touch_bundle PRIVATE
    "LINKER:-exported_symbols_list,${exported_symbols}" LINKER:-dead_strip)
set_target_properties(qvr_touch_bundle PROPERTIES
    BUNDLE TRUE
    OUTPUT_NAME qvr_touch
    LINKER_LANGUAGE CXX
    LINK_DEPENDS ${exported_symbols}
    MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/cmake/macos/Info.plist.in
    MACOSX_BUNDLE_BUNDLE_NAME qvr_touch
    MACOSX_BUNDLE_GUI_IDENTIFIER touch.qvr.plugin
    MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
    MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION})
install(TARGETS qvr_touch_bundle LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
