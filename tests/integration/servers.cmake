# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(servers_dialect SOURCES servers_dialect.cpp
  LINK kestrel_servers kestrel_store_endpoint kestrel_virtuoso_server Qt6::Network LABELS integration TIMEOUT 300)
kestrel_test(servers_changes SOURCES servers_changes.cpp
  LINK kestrel_servers kestrel_fake_sparql kestrel_virtuoso_server LABELS integration TIMEOUT 300)
add_dependencies(servers_changes kestrel-odbc)
kestrel_test(servers_endpoint SOURCES servers_endpoint.cpp
  LINK kestrel_servers kestrel_store_endpoint kestrel_virtuoso_server LABELS integration TIMEOUT 300)
