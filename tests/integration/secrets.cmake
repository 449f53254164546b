# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(secrets_keyring SOURCES secrets_keyring.cpp LINK kestrel_servers LABELS integration)
target_include_directories(secrets_keyring PRIVATE ${CMAKE_SOURCE_DIR}/tests)
