# Installs the libraries with the headers that programs include, and a package that
# find_package(vok) finds: vok::vok, vok::serializer and, for C, vok::c and vok::serializer_c.
include(CMakePackageConfigHelpers)

set(VOK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vok)

install(TARGETS vok vok_serializer vok_c vok_serializer_c EXPORT vok-targets FILE_SET HEADERS
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})  # for a CMake that knows no header sets
install(EXPORT vok-targets NAMESPACE vok:: DESTINATION ${VOK_PACKAGE_DIR})

file(WRITE ${PROJECT_BINARY_DIR}/vok-config.cmake
"include(CMakeFindDependencyMacro)
find_dependency(ZLIB)
include(\${CMAKE_CURRENT_LIST_DIR}/vok-targets.cmake)
")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vok-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vok-config.cmake ${PROJECT_BINARY_DIR}/vok-config-version.cmake
        DESTINATION ${VOK_PACKAGE_DIR})
