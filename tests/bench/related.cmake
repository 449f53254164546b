# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_program(bench_related
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/bench_related.cpp ${CMAKE_CURRENT_SOURCE_DIR}/relatedlibrary.cpp ${CMAKE_CURRENT_SOURCE_DIR}/relatedlibrary.h
  LINK kestrel_related PkgConfig::TRACKER PkgConfig::GIO)
target_compile_definitions(bench_related PRIVATE KESTREL_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
add_dependencies(bench_related kestrel-store)
