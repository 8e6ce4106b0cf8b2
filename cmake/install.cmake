# Installs the libraries with the headers that programs include, and a package that
# find_package(vok) finds: vok::vok, vok::serializer and, for C, vok::serializer_c.
include(CMakePackageConfigHelpers)

set(VOK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vok)

install(TARGETS vok vok_serializer vok_serializer_c EXPORT vok-targets)
install(EXPORT vok-targets NAMESPACE vok:: DESTINATION ${VOK_PACKAGE_DIR})

# Headers marked "Internal." stay at home.
file(GLOB_RECURSE public_headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
     ${PROJECT_SOURCE_DIR}/vok/*.h ${PROJECT_SOURCE_DIR}/serializer/*.h)
foreach(header IN LISTS public_headers)
  file(STRINGS ${PROJECT_SOURCE_DIR}/${header} internal REGEX "Internal[.:]" LIMIT_COUNT 1)
  if(NOT internal)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
  endif()
endforeach()

file(WRITE ${PROJECT_BINARY_DIR}/vok-config.cmake
"include(CMakeFindDependencyMacro)
find_dependency(ZLIB)
include(\${CMAKE_CURRENT_LIST_DIR}/vok-targets.cmake)
")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vok-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vok-config.cmake ${PROJECT_BINARY_DIR}/vok-config-version.cmake
        DESTINATION ${VOK_PACKAGE_DIR})
