# Copyright 2026 The MoxVlanRangeMapping Authors
# SPDX-License-Identifier: Apache-2.0

# What every target of the tree is built with, and how a test is made.

include_guard( GLOBAL )
include( CheckPIESupported )
check_pie_supported( LANGUAGES CXX )

# mox_target_defaults( <target> )
#
# Language level, warnings, visibility, include roots, guards, sanitizers and coverage.
function( mox_target_defaults target )
   set_target_properties( ${target} PROPERTIES
      LINKER_LANGUAGE CXX
      CXX_EXTENSIONS OFF
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON
      POSITION_INDEPENDENT_CODE ON )
   target_compile_features( ${target} PUBLIC cxx_std_20 )
   target_include_directories( ${target} PRIVATE
      "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/platform" )

   if( CMAKE_CXX_COMPILER_ID STREQUAL GNU )
      # A unique symbol keeps its library loaded for ever; Clang makes none.
      target_compile_options( ${target} PRIVATE -fno-gnu-unique )
   endif()

   target_compile_options( ${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion )
   if( MOX_WERROR )
      target_compile_options( ${target} PRIVATE -Werror )
   endif()

   if( CMAKE_SIZEOF_VOID_P EQUAL 4 )
      # Wall time after January 2038, files above 2 GB.
      target_compile_definitions( ${target} PRIVATE _TIME_BITS=64 _FILE_OFFSET_BITS=64 )
   endif()

   # Cheap guards; they are in all that is built, so the tests run what is shipped.
   target_compile_definitions( ${target} PRIVATE _GLIBCXX_ASSERTIONS )
   target_compile_options( ${target} PRIVATE -fstack-protector-strong -fstack-clash-protection )
   target_link_options( ${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack )
   if( MOX_SANITIZE )
      target_compile_options( ${target} PRIVATE
         -fsanitize=${MOX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer )
      target_link_options( ${target} PRIVATE -fsanitize=${MOX_SANITIZE} )
   else()
      # A sanitizer's run-time symbols come with the executable, so this holds only without.
      target_link_options( ${target} PRIVATE -Wl,--no-undefined )
      # Needs optimisation, and hides the plain names that the sanitizers watch.
      target_compile_options( ${target} PRIVATE
         "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>" )
   endif()

   if( MOX_BUILD_FUZZERS )
      # Counters alone; the driver with its main() is linked by the fuzz targets.
      target_compile_options( ${target} PRIVATE -fsanitize=fuzzer-no-link )
   endif()

   if( MOX_COVERAGE )
      target_compile_options( ${target} PRIVATE --coverage )
      target_link_options( ${target} PRIVATE --coverage )
      get_target_property( type ${target} TYPE )
      if( type MATCHES "EXECUTABLE|SHARED_LIBRARY" )
         target_sources( ${target} PRIVATE
            "${PROJECT_SOURCE_DIR}/cmake/coverage/CountUntilAbort.cpp" )
      endif()
   endif()
endfunction()

# The OBJECT libraries behind the two shared ones. A test that needs hidden symbols links
# these, and then no shared one: the platform's globals exist once per process.
set( MOX_PLATFORM_OBJECTS Zel Corvel Bridging Quen Pelrec Kirlog Mox )
set( MOX_OBJECTS ${MOX_PLATFORM_OBJECTS} MoxVlanMapping )

# mox_launcher( <target> <variable> )
#
# What other programs call to run that one: itself or, for another processor, a script that calls
# the emulator, which passes the script on as the program's own name.
function( mox_launcher target variable )
   set( launcher "$<TARGET_FILE:${target}>" )
   if( CMAKE_CROSSCOMPILING_EMULATOR )
      list( JOIN CMAKE_CROSSCOMPILING_EMULATOR "' '" emulator )
      set( script "${CMAKE_CURRENT_BINARY_DIR}/${target}.sh" )
      file( GENERATE OUTPUT "${script}"
         CONTENT "#!/bin/sh\nexec '${emulator}' -0 \"$0\" '${launcher}' \"$@\"\n"
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE )
      set( launcher "${script}" )
   endif()
   set( ${variable} "${launcher}" PARENT_SCOPE )
endfunction()

# mox_emulated_seconds( <seconds> <variable> )
#
# A time limit with, for another processor, about what emulation costs.
function( mox_emulated_seconds seconds variable )
   if( CMAKE_CROSSCOMPILING_EMULATOR )
      math( EXPR seconds "10 * ${seconds}" )
   endif()
   set( ${variable} ${seconds} PARENT_SCOPE )
endfunction()

# mox_add_test( <target> SOURCES <file>... [LINK <target>...] [TIMEOUT <seconds>]
#               [LABELS <label>...] )
#
# A GoogleTest program; each of its cases is one ctest. LINK names either OBJECT libraries
# (${MOX_OBJECTS} or some of them) or MoxVlanRangeMapping and MoxPlatform, never both kinds.
function( mox_add_test target )
   cmake_parse_arguments( PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LINK;LABELS" )
   if( NOT DEFINED arg_SOURCES OR DEFINED arg_UNPARSED_ARGUMENTS )
      message( FATAL_ERROR "mox_add_test( ${target} ): SOURCES missing or unknown argument "
         "\"${arg_UNPARSED_ARGUMENTS}\"" )
   endif()
   if( NOT DEFINED arg_TIMEOUT )
      set( arg_TIMEOUT 120 )
   endif()
   set( hidden ${arg_LINK} )
   list( FILTER hidden INCLUDE REGEX "^(Zel|Corvel|Bridging|Quen|Pelrec|Kirlog|Mox|MoxVlanMapping)$" )
   set( shared ${arg_LINK} )
   list( FILTER shared INCLUDE REGEX "^(MoxPlatform|MoxVlanRangeMapping)$" )
   if( hidden AND shared )
      message( FATAL_ERROR "mox_add_test( ${target} ): ${hidden} and ${shared} in one process" )
   endif()

   add_executable( ${target} ${arg_SOURCES} )
   mox_target_defaults( ${target} )
   if( CMAKE_CROSSCOMPILING_EMULATOR )
      # Told its launcher's name: a death test may start its program anew.
      mox_launcher( ${target} launcher )
      set_target_properties( ${target} PROPERTIES
         CROSSCOMPILING_EMULATOR "${CMAKE_CROSSCOMPILING_EMULATOR};-0;${launcher}" )
   endif()
   mox_emulated_seconds( ${arg_TIMEOUT} arg_TIMEOUT )
   target_link_libraries( ${target} PRIVATE ${arg_LINK} TestMain )
   # Found when ctest starts, so a build runs no test program.
   gtest_discover_tests( ${target}
      DISCOVERY_MODE PRE_TEST
      DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" )
endfunction()
