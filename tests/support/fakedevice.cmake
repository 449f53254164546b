# SPDX-License-Identifier: GPL-3.0-or-later
# Calls, USB mode, key-value store, backlight and notices as a test wants them.
add_library(kestrel_fake_device STATIC ${CMAKE_CURRENT_SOURCE_DIR}/fakedevice.cpp ${CMAKE_CURRENT_SOURCE_DIR}/fakedevice.h)
target_include_directories(kestrel_fake_device PUBLIC ${CMAKE_SOURCE_DIR}/tests)
target_link_libraries(kestrel_fake_device PUBLIC kestrel_options kestrel_system Qt6::Core)
