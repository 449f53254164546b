# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(servers_virtuoso SOURCES servers_virtuoso.cpp LINK kestrel_servers kestrel_virtuoso_server LABELS integration TIMEOUT 600)
add_dependencies(servers_virtuoso kestrel-odbc)
