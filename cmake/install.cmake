# What `cmake --install` lays down: both libraries, the headers, the manual pages, and
# what CMake and pkg-config need to find them. All paths are relative to the installed
# files, so that the tree can be moved.
include(CMakePackageConfigHelpers)

install(TARGETS pivra_shared pivra_static EXPORT pivra)
install(FILES ${PROJECT_SOURCE_DIR}/include/pivra.h ${PROJECT_SOURCE_DIR}/include/pivra.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/pivra DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/libpivra.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3)
if(PIVRA_TOOL)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/pivra.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/pivra)
install(EXPORT pivra FILE pivra-config.cmake NAMESPACE pivra:: DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/pivra-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pivra-config-version.cmake DESTINATION ${package_dir})

# An absolute directory given at configuration replaces the prefix.
file(RELATIVE_PATH up_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(dir IN ITEMS INCLUDEDIR LIBDIR)
  set(pc_${dir} "\${prefix}")
  cmake_path(APPEND pc_${dir} ${CMAKE_INSTALL_${dir}})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/pivra.pc.in pivra.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pivra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
