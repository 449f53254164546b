# SPDX-License-Identifier: GPL-3.0-or-later
add_library(kestrel_fake_secrets STATIC fakesecrets.cpp fakesecrets.h)
target_link_libraries(kestrel_fake_secrets PUBLIC kestrel_options Qt6::Core Qt6::DBus)
target_include_directories(kestrel_fake_secrets PUBLIC ${CMAKE_SOURCE_DIR}/tests)
