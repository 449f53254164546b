# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(data_trackerinterfacetest SOURCES data_trackerinterfacetest.cpp LINK kestrel_data PkgConfig::GIO
  LABELS integration TIMEOUT 300)
target_include_directories(data_trackerinterfacetest PRIVATE ${CMAKE_SOURCE_DIR}/tests)
add_dependencies(data_trackerinterfacetest kestrel-store kestrel-media-worker)
