# SPDX-License-Identifier: GPL-3.0-or-later
# The store library's own HTTP endpoint over a database of a test's own.
add_library(kestrel_store_endpoint STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/storeendpoint.cpp ${CMAKE_CURRENT_SOURCE_DIR}/storeendpoint.h)
target_include_directories(kestrel_store_endpoint PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(kestrel_store_endpoint PUBLIC kestrel_sparql Qt6::Network
  PRIVATE PkgConfig::TRACKER PkgConfig::GIO)
