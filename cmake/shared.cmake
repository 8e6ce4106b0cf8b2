# SPDX-License-Identifier: MIT
# The C++ library once more as a shared one, of the same sources: the static one hides its symbols, for
# libraries that are made of it.
get_target_property(sources vok SOURCES)
add_library(vok_shared SHARED ${sources})
add_library(vok::shared ALIAS vok_shared)
set_target_properties(vok_shared PROPERTIES
  EXPORT_NAME shared
  OUTPUT_NAME vok
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
target_compile_features(vok_shared PUBLIC cxx_std_20)
target_include_directories(vok_shared SYSTEM PRIVATE ${XXHASH_INCLUDE_DIR} ${RAPIDJSON_INCLUDE_DIR})
target_include_directories(vok_shared PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                             $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(vok_shared PRIVATE $<BUILD_INTERFACE:vok_build> ZLIB::ZLIB)
set(symbols ${PROJECT_SOURCE_DIR}/vok/symbols.map)
target_link_options(vok_shared PRIVATE -Wl,--version-script=${symbols} -Wl,--no-undefined)
set_target_properties(vok_shared PROPERTIES LINK_DEPENDS ${symbols})
