# SPDX-License-Identifier: GPL-3.0-or-later
# Locks, display, sleep and idleness against services on a bus of the test's own.
foreach(name locks display sleep idle)
  kestrel_test(device_${name} SOURCES device_${name}.cpp LINK kestrel_system kestrel_mock_services PkgConfig::XCB
    LABELS integration TIMEOUT 240)
endforeach()
kestrel_test(device_hanging SOURCES device_hanging.cpp LINK kestrel_controller_fixture kestrel_mock_services
  LABELS integration TIMEOUT 240)
