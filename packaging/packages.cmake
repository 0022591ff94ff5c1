# The Debian packages, one an installation component.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME clm)
set(CPACK_PACKAGE_VENDOR "The CLM maintainers")
set(CPACK_PACKAGE_CONTACT "The CLM maintainers <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL clm hwapi-host clmctl boardsim hwapi-dev)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  $<TARGET_FILE_DIR:QIS>)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(same_version "(= ${PROJECT_VERSION}-1)")

# package NAME SUMMARY [DEPENDS...]
function(package name summary)
  string(TOUPPER ${name} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}" PARENT_SCOPE)
  string(JOIN ", " depends ${ARGN})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
endfunction()

package(clm "Climate service of a base-station board: temperatures, fans, black box"
  "hwapi-host ${same_version}" "bash" "systemd | systemd-sysusers" "systemd | systemd-tmpfiles")
package(hwapi-host "Hardware-API platform libraries for a Linux host")
package(clmctl "Client of the climate service" "hwapi-host ${same_version}")
package(boardsim "Simulated base-station board for the climate service"
  "hwapi-host ${same_version}" "clm ${same_version}" "bubblewrap")
package(hwapi-dev "Hardware-API platform: headers" "hwapi-host ${same_version}")
set(CPACK_DEBIAN_HWAPI-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CLMCTL_PACKAGE_RECOMMENDS gnuplot-nox)
set(CPACK_DEBIAN_CLM_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst;${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm;${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm")

include(CPack)
