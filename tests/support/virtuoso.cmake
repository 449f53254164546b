# SPDX-License-Identifier: GPL-3.0-or-later
find_program(KESTREL_PYTHON NAMES /usr/bin/python3 python3 REQUIRED)
# A real Virtuoso server of a test's own.
add_library(kestrel_virtuoso_server STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/virtuososerver.cpp ${CMAKE_CURRENT_SOURCE_DIR}/virtuososerver.h)
target_include_directories(kestrel_virtuoso_server PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_compile_definitions(kestrel_virtuoso_server PRIVATE
  KESTREL_PYTHON="${KESTREL_PYTHON}" KESTREL_VIRTUOSO_SERVER="${CMAKE_CURRENT_SOURCE_DIR}/virtuososerver.py")
target_link_libraries(kestrel_virtuoso_server PUBLIC kestrel_options Qt6::Core)
