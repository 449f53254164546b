# SPDX-License-Identifier: GPL-3.0-or-later
find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
foreach(name store_service store_files store_faults)
  kestrel_test(${name} SOURCES ${name}.cpp LINK kestrel_store_session Qt6::Network LABELS integration TIMEOUT 300)
endforeach()
kestrel_test(store_desktopindex SOURCES store_desktopindex.cpp
  LINK kestrel_store_session kestrel_desktop_miner LABELS integration TIMEOUT 1200)
