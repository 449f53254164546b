# SPDX-License-Identifier: GPL-3.0-or-later
if(NOT TARGET kestrel_store_peer)
  add_subdirectory(${CMAKE_SOURCE_DIR}/tests/support ${CMAKE_BINARY_DIR}/tests/support)
endif()
kestrel_program(bench_load
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/bench_load.cpp ${CMAKE_CURRENT_SOURCE_DIR}/barecursor.cpp ${CMAKE_CURRENT_SOURCE_DIR}/barecursor.h
  LINK kestrel_data kestrel_store_peer PkgConfig::TRACKER PkgConfig::GIO)
