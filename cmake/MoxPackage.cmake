# Copyright 2026 The MoxVlanRangeMapping Authors
# SPDX-License-Identifier: Apache-2.0

# cmake --install: libraries, headers, agent, CMake package and pkg-config file.

include_guard( GLOBAL )
include( CMakePackageConfigHelpers )

set( headers "${CMAKE_INSTALL_INCLUDEDIR}/MoxVlanRangeMapping" )
set( package "${CMAKE_INSTALL_LIBDIR}/cmake/MoxVlanRangeMapping" )

foreach( library IN ITEMS MoxPlatform MoxVlanRangeMapping )
   target_include_directories( ${library} INTERFACE "$<INSTALL_INTERFACE:${headers}>" )
   set_target_properties( ${library} PROPERTIES INSTALL_RPATH "$ORIGIN" )
endforeach()
install( TARGETS MoxPlatform MoxVlanRangeMapping EXPORT MoxVlanRangeMapping
   LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" )

# What stands behind the public headers: none of them includes these, and what they declare is
# exported by no library, so nobody could use them.
set( insides
   MoxVlanMapping/RangeRules.h
   MoxVlanMapping/RangeSlots.h
   MoxVlanMapping/RangeStore.h
   MoxVlanMapping/SizeOrder.h
   Mox/Delivered.h )
list( TRANSFORM insides REPLACE "(.+)" "PATTERN;\\1;EXCLUDE" )

# Folder names stay, so an include reads the same here and in a user's source.
install( DIRECTORY "${PROJECT_SOURCE_DIR}/platform/" "${PROJECT_SOURCE_DIR}/MoxVlanMapping"
   DESTINATION "${headers}"
   FILES_MATCHING PATTERN "*.h"
   ${insides} )

if( TARGET vlan-scale-agent )
   file( RELATIVE_PATH fromBin
      "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}" )
   set_target_properties( vlan-scale-agent PROPERTIES INSTALL_RPATH "$ORIGIN/${fromBin}" )
   install( TARGETS vlan-scale-agent RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" )
endif()

install( EXPORT MoxVlanRangeMapping
   NAMESPACE MoxVlanRangeMapping::
   FILE MoxVlanRangeMappingConfig.cmake
   DESTINATION "${package}" )
write_basic_package_version_file(
   "${PROJECT_BINARY_DIR}/MoxVlanRangeMappingConfigVersion.cmake"
   COMPATIBILITY SameMajorVersion )
install( FILES "${PROJECT_BINARY_DIR}/MoxVlanRangeMappingConfigVersion.cmake"
   DESTINATION "${package}" )

# Relative to the file itself: the installed tree may be moved as a whole.
file( RELATIVE_PATH fromPkgConfig
   "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}" )
string( REGEX REPLACE "/$" "" fromPkgConfig "${fromPkgConfig}" )
configure_file( "${PROJECT_SOURCE_DIR}/cmake/MoxVlanRangeMapping.pc.in"
   "${PROJECT_BINARY_DIR}/MoxVlanRangeMapping.pc" @ONLY )
install( FILES "${PROJECT_BINARY_DIR}/MoxVlanRangeMapping.pc"
   DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" )
