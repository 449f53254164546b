# SPDX-License-Identifier: GPL-3.0-or-later
# The toolkit by keyboard, and to those who do not see it.
foreach(name guests list silence textmenu widgets)
  kestrel_test(test_access_${name}
    SOURCES access_${name}.cpp widgets_listfixture.h accessevents.h
    LINK kestrel_toolkit Qt6::Widgets)
endforeach()
