# What is installed: the program, the library with its texts where the program looks for it, and the headers that a host needs.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Deliberately not CMAKE_INSTALL_LIBDIR: `q7z` finds the library by its place relative to the program, `../lib/q7z`.
set(Q7Z_INSTALL_LIBDIR lib/q7z)

install(TARGETS q7z_app RUNTIME DESTINATION bin)
install(TARGETS io_gltf LIBRARY DESTINATION ${Q7Z_INSTALL_LIBDIR})
get_target_property(resourceFiles io_gltf Q7Z_RESOURCES)
if(resourceFiles)
  install(FILES ${resourceFiles} DESTINATION ${Q7Z_INSTALL_LIBDIR}/resources)
endif()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/framework" DESTINATION include/q7z FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/plugin/module" DESTINATION include/q7z/plugin FILES_MATCHING PATTERN "host*.h")

# `find_package(q7z)` gives a host the targets q7z::framework and q7z::hostapi.
install(TARGETS q7z_framework q7z_hostapi EXPORT q7zTargets ARCHIVE DESTINATION ${Q7Z_INSTALL_LIBDIR})
install(EXPORT q7zTargets NAMESPACE q7z:: DESTINATION ${Q7Z_INSTALL_LIBDIR}/cmake FILE q7zConfig.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/q7zConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/q7zConfigVersion.cmake" DESTINATION ${Q7Z_INSTALL_LIBDIR}/cmake)
