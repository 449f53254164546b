# SPDX-License-Identifier: GPL-3.0-or-later
# Styles, theme, layouts and widgets.
foreach(name theme contrast layout label textedit texteditlook texteditmenu controls catalogs appearance feedback)
  kestrel_test(test_widgets_${name}
    SOURCES widgets_${name}.cpp
    LINK kestrel_toolkit Qt6::Widgets)
endforeach()
target_include_directories(test_widgets_texteditmenu PRIVATE ${CMAKE_SOURCE_DIR}/tests)
target_include_directories(test_widgets_theme PRIVATE ${CMAKE_SOURCE_DIR}/tests)
# theme.cpp as a release is compiled: without a source theme. The library's own copy is then not taken.
set(theme ${CMAKE_SOURCE_DIR}/src/platform/toolkit/theme.cpp)
set_source_files_properties(${theme} PROPERTIES SKIP_AUTOMOC ON)
kestrel_test(test_widgets_releasetheme SOURCES widgets_releasetheme.cpp ${theme} LINK kestrel_toolkit Qt6::Widgets)
# The fixture of the list has cells with signals: it is named, so that they are made.
foreach(name list listinput)
  kestrel_test(test_widgets_${name}
    SOURCES widgets_${name}.cpp widgets_listfixture.h
    LINK kestrel_toolkit Qt6::Widgets)
endforeach()
