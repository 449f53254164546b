# SPDX-License-Identifier: GPL-3.0-or-later
# The three kinds of target of this project. Each folder's CMakeLists.txt lists its own sources explicitly.

add_library(kestrel_options INTERFACE)
target_compile_options(kestrel_options INTERFACE -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wno-unused-parameter)
if(KESTREL_WERROR)
  target_compile_options(kestrel_options INTERFACE -Werror)
endif()
# G_SIGNALS of GLib and Qt's keywords meet in the back ends: the macro forms only (Q_SIGNALS, Q_SLOTS, Q_EMIT).
target_compile_definitions(kestrel_options INTERFACE
  QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(kestrel_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/services)
if(KESTREL_SANITIZE)
  # The instrumented code makes gcc 12 see uninitialised values in std::optional that are none.
  target_compile_options(kestrel_options INTERFACE -fsanitize=${KESTREL_SANITIZE} -fno-omit-frame-pointer -Wno-maybe-uninitialized)
  target_link_options(kestrel_options INTERFACE -fsanitize=${KESTREL_SANITIZE})
endif()

# kestrel_module(name SOURCES ... [LINK ...] [PRIVATE_LINK ...]): a library, static unless BUILD_SHARED_LIBS says otherwise;
# without sources a header-only one.
function(kestrel_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  if(ARG_SOURCES)
    add_library(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC kestrel_options Qt6::Core ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE kestrel_options Qt6::Core ${ARG_LINK} ${ARG_PRIVATE_LINK})
  endif()
endfunction()

# kestrel_program(name SOURCES ... LINK ...): an executable in bin/.
function(kestrel_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE kestrel_options Qt6::Core ${ARG_LINK})
endfunction()

# kestrel_test(name SOURCES ... LINK ... [LABELS unit|integration|e2e] [TIMEOUT seconds]): a Qt Test program and its ctest
# entry. It runs with a display, a session bus and a home of its own (tests/support/with-session).
function(kestrel_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE kestrel_options Qt6::Core Qt6::Test ${ARG_LINK})
  target_compile_options(${name} PRIVATE -include ${CMAKE_SOURCE_DIR}/tests/support/patience.h)
  target_compile_definitions(${name} PRIVATE KESTREL_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" KESTREL_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${CMAKE_SOURCE_DIR}/tests/support/with-session $<TARGET_FILE:${name}>)
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
