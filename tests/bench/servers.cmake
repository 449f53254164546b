# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_program(bench_serverload SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/bench_serverload.cpp LINK kestrel_app kestrel_servers)
add_dependencies(bench_serverload kestrel-store kestrel-odbc)
