# SPDX-License-Identifier: MIT
# For a registry of your own: SOURCE_PATH is where the sources are.
vcpkg_check_features(OUT_FEATURE_OPTIONS features FEATURES tool VOK_PROGRAM)
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS ${features} -DVOK_INSTALL=ON -DVOK_TESTS=OFF -DVOK_DOTNET=OFF -DVOK_PYTHON=OFF -DVOK_SHARED=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME vok CONFIG_PATH lib/cmake/vok)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
