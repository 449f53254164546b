# SPDX-License-Identifier: GPL-3.0-or-later
foreach(test IN ITEMS
    activationtoken applicationservice bannerroom focussight inverted locale objectmenu querydialog scenemanager sheet sheetinput touchcancel transition
    viewport viewportposition viewportpull
    window windowescape windowgeometry windowpresence windowturn)
  kestrel_test(toolkit_core_${test}test SOURCES core_${test}test.cpp LINK kestrel_toolkit)
  target_include_directories(toolkit_core_${test}test PRIVATE ${CMAKE_SOURCE_DIR}/tests)
endforeach()
get_target_property(lrelease Qt6::lrelease IMPORTED_LOCATION)
target_compile_definitions(toolkit_core_localetest PRIVATE LRELEASE="${lrelease}")
