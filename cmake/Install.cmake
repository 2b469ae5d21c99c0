# What an installation holds: library, headers, pkg-config file and CMake package.
include(CMakePackageConfigHelpers)

install(TARGETS dov0610 EXPORT dov0610-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/dov0610.h ${PROJECT_SOURCE_DIR}/include/dov0610_platform.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/dov0610)
install(EXPORT dov0610-targets NAMESPACE dov0610:: DESTINATION ${package_folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/dov0610-config.cmake.in
    ${PROJECT_BINARY_DIR}/dov0610-config.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/dov0610-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/dov0610-config.cmake ${PROJECT_BINARY_DIR}/dov0610-config-version.cmake
    DESTINATION ${package_folder})

# The pkg-config file finds the rest from where it is, so that an installation may be moved.
file(RELATIVE_PATH DOV0_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(folder LIBDIR INCLUDEDIR)
    if(IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
        set(DOV0_PC_${folder} ${CMAKE_INSTALL_${folder}})
    else()
        set(DOV0_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
    endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/dov0610.pc.in ${PROJECT_BINARY_DIR}/dov0610.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/dov0610.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
