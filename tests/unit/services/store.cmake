# SPDX-License-Identifier: GPL-3.0-or-later
foreach(name store_updatetext store_endpointmessages store_journal store_changefeed store_database store_follower store_recordeddesk store_values)
  kestrel_test(${name} SOURCES ${name}.cpp LINK kestrel_store_core)
endforeach()
kestrel_test(store_indexmirror SOURCES store_indexmirror.cpp LINK kestrel_store_core kestrel_index_peer)
foreach(name store_indexer store_toldfiles)
  kestrel_test(${name} SOURCES ${name}.cpp indexerfixture.cpp indexerfixture.h LINK kestrel_store_core)
endforeach()
