# SPDX-License-Identifier: GPL-3.0-or-later
set(TOOLKIT_ACCESS_SOURCES
  accessibility.cpp
  accessibleguest.cpp
  accessibleitem.cpp
  accessiblelist.cpp
  accessiblelistitem.cpp
  accessibleparts.cpp
  accessibletextedit.cpp
  accessiblevalue.cpp
  accessiblewidget.cpp
  accessiblewindow.cpp
  listaccess.cpp
  texteditaccess.cpp)
