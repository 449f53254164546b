# SPDX-License-Identifier: GPL-3.0-or-later
# The worker as it ships, but for files that ask it to misbehave.
add_executable(kestrel-media-worker-faulty faultyworker.cpp)
set_target_properties(kestrel-media-worker-faulty PROPERTIES AUTOMOC OFF AUTORCC OFF RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
target_link_libraries(kestrel-media-worker-faulty PRIVATE kestrel_media_worker_core)

kestrel_test(worker_pool_test
  SOURCES worker_pool_test.cpp ../../support/testclips.cpp ../../support/testclips.h
  LINK kestrel_media_pool Qt6::Gui
  TIMEOUT 180)
add_dependencies(worker_pool_test kestrel-media-worker)

kestrel_test(worker_streams_test
  SOURCES worker_streams_test.cpp
  LINK kestrel_media_pool Qt6::Gui)
add_dependencies(worker_streams_test kestrel-media-worker)

kestrel_test(worker_faults_test
  SOURCES worker_faults_test.cpp ../../support/testclips.cpp ../../support/testclips.h
  LINK kestrel_media_pool Qt6::Gui
  TIMEOUT 180)
add_dependencies(worker_faults_test kestrel-media-worker-faulty)

kestrel_test(worker_reply_test
  SOURCES worker_reply_test.cpp
  LINK kestrel_media_pool Qt6::Gui)

kestrel_test(worker_opening_test
  SOURCES worker_opening_test.cpp ../../support/testclips.cpp ../../support/testclips.h
  LINK kestrel_media_worker_core PkgConfig::GSTREAMER)

kestrel_test(worker_picture_test
  SOURCES worker_picture_test.cpp
  LINK kestrel_media_worker_core PkgConfig::GSTREAMER)

# A sanitizer's own runtime forks, traces and opens files at the end of a process, which is what the jail forbids.
if(NOT KESTREL_SANITIZE)
  kestrel_test(worker_jail_test
    SOURCES worker_jail_test.cpp
    LINK kestrel_media_worker_core)
endif()
