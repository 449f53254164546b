# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_program(bench_scroll SOURCES bench_scroll.cpp LINK kestrel_toolkit Qt6::Widgets)
kestrel_program(bench_transitions SOURCES bench_transitions.cpp LINK kestrel_library Qt6::Widgets)
