# SPDX-License-Identifier: MIT
# Cross-builds for 64-bit Windows with mingw-w64 (posix threads), on Debian. Programs and libraries
# need no file but those of Windows itself: the runtime of g++ and zlib are linked in.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)

set(prefix x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${prefix}-gcc-posix)
set(CMAKE_CXX_COMPILER ${prefix}-g++-posix)
set(CMAKE_RC_COMPILER ${prefix}-windres)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()
set(ZLIB_USE_STATIC_LIBS ON)

# Headers that are the same everywhere come from this machine's packages, each by itself: the
# rest of /usr/include belongs to another system.
set(headers ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headers}/include ${headers}/share/cmake)
foreach(name CLI rapidjson xxhash.h)
  if(EXISTS /usr/include/${name})
    file(CREATE_LINK /usr/include/${name} ${headers}/include/${name} SYMBOLIC)
  endif()
endforeach()
# Copied, since they find their headers by their own place.
file(GLOB packages /usr/share/cmake/CLI11)
file(COPY ${packages} DESTINATION ${headers}/share/cmake)

set(CMAKE_FIND_ROOT_PATH /usr/${prefix} ${headers})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# What is built runs under wine, with a Windows of its own.
set(CMAKE_CROSSCOMPILING_EMULATOR env LC_ALL=C.UTF-8 WINEDEBUG=-all WINEPREFIX=${CMAKE_BINARY_DIR}/wine wine)
