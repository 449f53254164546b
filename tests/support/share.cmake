# SPDX-License-Identifier: GPL-3.0-or-later
add_library(kestrel_fake_share STATIC
  fakebluetooth.cpp fakebluetooth.h
  fakeportal.cpp fakeportal.h
  fakeshareservice.h)
target_link_libraries(kestrel_fake_share PUBLIC kestrel_options kestrel_system Qt6::DBus)
target_include_directories(kestrel_fake_share PUBLIC ${CMAKE_SOURCE_DIR}/tests)

kestrel_program(kestrel_portal_peer SOURCES portalpeer.cpp LINK kestrel_fake_share)
set_target_properties(kestrel_portal_peer PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
