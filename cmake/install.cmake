# SPDX-License-Identifier: MIT
# Installs the libraries with the headers that programs include, a package that find_package(vok)
# finds - components serializer (C++), c and serializer_c (both C) and shared - and modules for pkg-config.
include(CMakePackageConfigHelpers)

set(VOK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vok)

set(libraries vok vok_serializer vok_c vok_serializer_c)
if(VOK_SHARED)
  list(APPEND libraries vok_shared)
endif()
install(TARGETS ${libraries} EXPORT vok-targets FILE_SET HEADERS
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})  # for a CMake that knows no header sets
install(EXPORT vok-targets NAMESPACE vok:: DESTINATION ${VOK_PACKAGE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/vok-config.cmake.in ${PROJECT_BINARY_DIR}/vok-config.cmake @ONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vok-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vok-config.cmake ${PROJECT_BINARY_DIR}/vok-config-version.cmake
        DESTINATION ${VOK_PACKAGE_DIR})

# pkgconfig NAME DESCRIPTION LIBS [LIBS-OF-STATIC-ONES]
function(pkgconfig name description libs)
  set(text "prefix=${CMAKE_INSTALL_PREFIX}
libdir=${CMAKE_INSTALL_FULL_LIBDIR}
includedir=${CMAKE_INSTALL_FULL_INCLUDEDIR}

Name: ${name}
Description: ${description}
Version: ${PROJECT_VERSION}
Libs: -L\${libdir} ${libs}
Cflags: -I\${includedir}
")
  if(ARGN)
    string(APPEND text "Libs.private: ${ARGN}\n")
  endif()
  file(WRITE ${PROJECT_BINARY_DIR}/${name}.pc "${text}")
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# libvok_serializer is two things: the static library is C++, the shared one is the interface for C.
if(VOK_SHARED)
  set(core "-lvok")
else()
  set(core "-l:libvok.a -lz")
endif()
pkgconfig(vok "Self-describing object trees" "${core}" -lz)
pkgconfig(vok-serializer "Objects as self-describing trees" "-l:libvok_serializer.a ${core}" -lz)
pkgconfig(vok-c "Self-describing object trees, from C" "-lvok_c")
pkgconfig(vok-serializer-c "Objects as self-describing trees, from C" "-lvok_serializer")

# What debuggers show trees with. gdb finds it for the shared library; else it is to be sourced.
install(FILES ${PROJECT_SOURCE_DIR}/packaging/gdb/vok.py DESTINATION ${CMAKE_INSTALL_DATADIR}/vok/gdb)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/vok.natvis ${PROJECT_BINARY_DIR}/vok.spdx.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/vok)
if(VOK_SHARED)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/gdb/vok.py RENAME libvok.so.${PROJECT_VERSION}-gdb.py
          DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
endif()
