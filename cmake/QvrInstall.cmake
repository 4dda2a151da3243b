# Layout of an installation: plug-in, headers, programs, schemas, examples, and how other builds
# find them (CMake package QVRTouch, pkg-config file qvr-touch).

include(CMakePackageConfigHelpers)

set(QVR_INCLUDE_DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qvr_touch)
set(QVR_PACKAGE_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QVRTouch)
set(QVR_SHARE_DESTINATION ${CMAKE_INSTALL_DATADIR}/qvr-touch)

target_include_directories(qvr_touch INTERFACE
    $<INSTALL_INTERFACE:${QVR_INCLUDE_DESTINATION}>)
install(TARGETS qvr_touch realsense realsense_headers EXPORT QVRTouchTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET realsense_objects)
    install(DIRECTORY dependencies/realsense/include/ DESTINATION ${QVR_INCLUDE_DESTINATION})
endif()
install(DIRECTORY NativePluginSource/include/ DESTINATION ${QVR_INCLUDE_DESTINATION}
    FILES_MATCHING PATTERN "*.h")
foreach(subsystem foundation client calibration detection camera)
    install(DIRECTORY NativePluginSource/${subsystem} DESTINATION ${QVR_INCLUDE_DESTINATION}
        FILES_MATCHING PATTERN "*.h")
endforeach()
install(DIRECTORY schemas docs/examples DESTINATION ${QVR_SHARE_DESTINATION})

install(EXPORT QVRTouchTargets NAMESPACE QVRTouch:: DESTINATION ${QVR_PACKAGE_DESTINATION})
configure_package_config_file(cmake/QVRTouchConfig.cmake.in QVRTouchConfig.cmake
    INSTALL_DESTINATION ${QVR_PACKAGE_DESTINATION})
write_basic_package_version_file(QVRTouchConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/QVRTouchConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/QVRTouchConfigVersion.cmake
    DESTINATION ${QVR_PACKAGE_DESTINATION})

# Relative, so that an installation may be moved.
file(RELATIVE_PATH QVR_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qvr-touch.pc.in qvr-touch.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qvr-touch.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
