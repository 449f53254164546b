# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_program(bench_memory
  SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/bench_memory.cpp
  LINK kestrel_data kestrel_store_peer)
