# SPDX-License-Identifier: GPL-3.0-or-later
# Locks, display, sleep and idleness: a service's presence, signals and properties, and what is made of them.
target_sources(kestrel_system PRIVATE
  buspeer.cpp buspeer.h
  busproperty.cpp busproperty.h
  desktopdisplaywatcher.cpp desktopdisplaywatcher.h
  desktopidleinhibitor.cpp desktopidleinhibitor.h
  desktoplockwatcher.cpp desktoplockwatcher.h
  dpmspower.cpp dpmspower.h
  idlehold.cpp idlehold.h
  idleinhibitor.h
  logindsession.cpp logindsession.h
  logindsleepwatcher.cpp logindsleepwatcher.h
  nullpower.cpp nullpower.h
  portalidlehold.cpp portalidlehold.h
  programid.h
  screensaveridlehold.cpp screensaveridlehold.h
  screensaverwatcher.cpp screensaverwatcher.h
  sleepwatcher.h)
target_link_libraries(kestrel_system PRIVATE Qt6::Gui PkgConfig::XCB)
