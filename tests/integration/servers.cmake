# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(servers_dialect SOURCES servers_dialect.cpp
  LINK kestrel_servers kestrel_store_endpoint kestrel_virtuoso_server Qt6::Network LABELS integration TIMEOUT 300)
