# Installs the library, the reference host, the headers that a host needs, and the CMake package by
# which a host's build finds them.
include(CMakePackageConfigHelpers)

install(TARGETS windows_installed_applications artifact_plugin_interface
    EXPORT windows_installed_applications_targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${WIA_INCLUDE_FOLDER})
install(TARGETS artifact_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT windows_installed_applications_targets
    NAMESPACE windows_installed_applications::
    DESTINATION ${WIA_PACKAGE_FOLDER})
configure_package_config_file(
    ${CMAKE_CURRENT_LIST_DIR}/windows_installed_applications-config.cmake.in
    ${PROJECT_BINARY_DIR}/windows_installed_applications-config.cmake
    INSTALL_DESTINATION ${WIA_PACKAGE_FOLDER}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/windows_installed_applications-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/windows_installed_applications-config.cmake
    ${PROJECT_BINARY_DIR}/windows_installed_applications-config-version.cmake
    DESTINATION ${WIA_PACKAGE_FOLDER})
