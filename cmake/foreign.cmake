# Copyright 2026 The MoxVlanRangeMapping Authors
# SPDX-License-Identifier: Apache-2.0

# Toolchain: Debian's cross compiler for MOX_FOREIGN (i386, aarch64 or s390x), with the libraries
# that tools/install-sysroot has unpacked. What is built runs from the build folder, under an
# emulator where the processor is another one.

set( CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MOX_FOREIGN )
set( CMAKE_SYSTEM_NAME Linux )
set( CMAKE_SYSTEM_PROCESSOR ${MOX_FOREIGN} )

set( triplet ${MOX_FOREIGN}-linux-gnu )
set( compiler ${triplet} )
if( MOX_FOREIGN STREQUAL "i386" )
   set( compiler i686-linux-gnu )   # its libraries keep the older name
endif()
set( CMAKE_CXX_COMPILER ${compiler}-g++ )
set( CMAKE_LIBRARY_ARCHITECTURE ${triplet} )

cmake_path( SET sysroot NORMALIZE "${CMAKE_CURRENT_LIST_DIR}/../build/sysroot/${MOX_FOREIGN}" )
set( libraries "${sysroot}/usr/lib/${triplet}" )
set( CMAKE_FIND_ROOT_PATH "${sysroot}" )
foreach( kind IN ITEMS LIBRARY INCLUDE PACKAGE )
   set( CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY )
endforeach()
set( CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER )
set( ENV{PKG_CONFIG_LIBDIR} "${sysroot}/usr/lib/${triplet}/pkgconfig" )
set( ENV{PKG_CONFIG_SYSROOT_DIR} "${sysroot}" )

if( MOX_FOREIGN STREQUAL "i386" )
   # Runs as it is, but the loader and its libraries are not where the system has them. The older
   # tag: libraries find theirs through it too.
   string( JOIN "," link -Wl --dynamic-linker=${sysroot}/lib/ld-linux.so.2
      --disable-new-dtags -rpath "${libraries}" )
else()
   set( link "-Wl,-rpath-link,${libraries}" )
   set( CMAKE_CROSSCOMPILING_EMULATOR qemu-${MOX_FOREIGN};-L;${sysroot} )
endif()
set( CMAKE_EXE_LINKER_FLAGS_INIT "${link}" )
set( CMAKE_SHARED_LINKER_FLAGS_INIT "${link}" )
