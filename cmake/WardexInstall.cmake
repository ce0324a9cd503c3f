# What `cmake --install` puts on the device, and what it offers to the device's other programs:
# find_package(wardex) gives them wardex::logger and wardex::quorl.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Below a folder of our own: "logger" is a name that others may have, too.
set(libraries ${CMAKE_INSTALL_LIBDIR}/wardex)
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/wardex)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/wardex)

foreach(library logger quorl)
    target_compile_features(${library} PUBLIC cxx_std_17)
    install(TARGETS ${library} EXPORT wardexTargets COMPONENT development
        ARCHIVE DESTINATION ${libraries} INCLUDES DESTINATION ${headers})
    install(DIRECTORY ${library}/include/${library} DESTINATION ${headers} COMPONENT development
        FILES_MATCHING PATTERN *.h)
endforeach()

install(EXPORT wardexTargets NAMESPACE wardex:: DESTINATION ${package} COMPONENT development)
configure_package_config_file(cmake/wardexConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/wardexConfig.cmake INSTALL_DESTINATION ${package}
    NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# Below 1.0 any minor release may change an interface.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/wardexConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/wardexConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/wardexConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

install(TARGETS wardex RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT runtime)
install(TARGETS wardexctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES packaging/dbus/com.orvo.wardex.conf
    DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d COMPONENT runtime)
