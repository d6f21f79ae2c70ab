# The files that `cmake --install` and `cpack -G DEB` install. None contains an absolute path, so the tree can be moved.
include(CMakePackageConfigHelpers)

install(TARGETS lumo_norvaX3 LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/lumo)
install(TARGETS lumo-inspect lumo-digest lumo-urdf)
install(FILES service/RigidBodySystem.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lumo/service)
install(FILES host/Plugin.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lumo/host)
install(DIRECTORY examples/host DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
install(FILES build/web/robot.html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)  # built by scripts/web.sh
install(FILES ${LUMO_MAN_PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# find_package(lumo) defines the target lumo::interface and the variable lumo_PLUGIN, the path of the plug-in. The
# stand-in for the math library is installed as lumo::oxmath. A host with a math library of its own must define the
# target oxmath.
set_target_properties(lumo_interface PROPERTIES EXPORT_NAME interface)
set_target_properties(lumo_eigen PROPERTIES EXPORT_NAME eigen)
set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/lumo)
install(TARGETS lumo_interface lumo_eigen EXPORT lumo)
install(EXPORT lumo NAMESPACE lumo:: FILE lumoTargets.cmake DESTINATION ${config_folder})
configure_package_config_file(cmake/lumoConfig.cmake.in ${PROJECT_BINARY_DIR}/lumoConfig.cmake
  INSTALL_DESTINATION ${config_folder}
  PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/lumoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/lumoConfig.cmake ${PROJECT_BINARY_DIR}/lumoConfigVersion.cmake
  DESTINATION ${config_folder})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The lumo developers <lumo@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libeigen3-dev (>= 3.4)")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)  # adds the libraries that the binaries need
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
include(CPack)
