# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(odbc_channel_test SOURCES odbc_channel_test.cpp LINK kestrel_odbc_core kestrel_servers)
add_dependencies(odbc_channel_test kestrel-odbc)
