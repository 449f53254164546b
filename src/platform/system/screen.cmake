# SPDX-License-Identifier: GPL-3.0-or-later
# Locks, display, sleep and idleness: a service's presence, signals and properties, and what is made of them.
target_sources(kestrel_system PRIVATE
  buspeer.cpp buspeer.h
  busproperty.cpp busproperty.h
  compositoridlehold.cpp compositoridlehold.h
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
target_link_libraries(kestrel_system PRIVATE Qt6::Gui Qt6::GuiPrivate PkgConfig::XCB PkgConfig::WAYLAND)

# The compositor's protocol for a screen that stays on, as C that compositoridlehold.cpp takes in.
pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
pkg_get_variable(WAYLAND_PROTOCOLS wayland-protocols pkgdatadir)
set(idle_protocol ${WAYLAND_PROTOCOLS}/unstable/idle-inhibit/idle-inhibit-unstable-v1.xml)
set(protocol_dir ${CMAKE_CURRENT_BINARY_DIR}/protocols)
file(MAKE_DIRECTORY ${protocol_dir})
add_custom_command(
  OUTPUT ${protocol_dir}/idle-inhibit-unstable-v1.h ${protocol_dir}/idle-inhibit-unstable-v1.c
  COMMAND ${WAYLAND_SCANNER} client-header ${idle_protocol} ${protocol_dir}/idle-inhibit-unstable-v1.h
  COMMAND ${WAYLAND_SCANNER} private-code ${idle_protocol} ${protocol_dir}/idle-inhibit-unstable-v1.c
  DEPENDS ${idle_protocol}
  COMMENT "Generating the idle protocol")
target_sources(kestrel_system PRIVATE ${protocol_dir}/idle-inhibit-unstable-v1.h)
set_source_files_properties(${protocol_dir}/idle-inhibit-unstable-v1.h PROPERTIES SKIP_AUTOGEN ON)
target_include_directories(kestrel_system SYSTEM PRIVATE ${protocol_dir})
