# SPDX-License-Identifier: GPL-3.0-or-later
set(SYSTEM_ACTIVATOR_SOURCES
  serviceactivator.cpp serviceactivator.h)
target_sources(kestrel_system PRIVATE ${SYSTEM_ACTIVATOR_SOURCES})
