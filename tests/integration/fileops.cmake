# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(fileops_titles
  SOURCES fileops_titles.cpp ../support/testclips.cpp ../support/testclips.h
  LINK kestrel_fileops
  LABELS integration TIMEOUT 300)
target_include_directories(fileops_titles PRIVATE ${CMAKE_SOURCE_DIR}/tests)
add_dependencies(fileops_titles kestrel-store kestrel-media-worker)
kestrel_test(fileops_saved SOURCES fileops_saved.cpp LINK kestrel_saveas kestrel_store_session LABELS integration TIMEOUT 300)
target_include_directories(fileops_saved PRIVATE ${CMAKE_SOURCE_DIR}/tests)
add_dependencies(fileops_saved kestrel-store kestrel-media-worker)
