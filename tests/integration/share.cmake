# SPDX-License-Identifier: GPL-3.0-or-later
foreach(name share_portal share_bluetooth share_service)
  kestrel_test(${name} SOURCES ${name}.cpp LINK kestrel_share kestrel_fake_share LABELS integration)
endforeach()
add_dependencies(share_portal kestrel_portal_peer)
target_compile_definitions(share_portal PRIVATE KESTREL_PORTAL_PEER="$<TARGET_FILE:kestrel_portal_peer>")
