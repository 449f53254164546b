# SPDX-License-Identifier: GPL-3.0-or-later
# The plug-in of the related videos as the program loads it, with the real store in folders of the test's own, and with a provider on this
# machine's network.
kestrel_test(related_library LABELS integration SOURCES related_library.cpp LINK kestrel_extensions kestrel_store_session)
kestrel_test(related_provider LABELS integration SOURCES related_provider.cpp LINK kestrel_extensions Qt6::Network)
target_include_directories(related_provider PRIVATE ${CMAKE_SOURCE_DIR}/tests)
foreach(test IN ITEMS related_library related_provider)
  add_dependencies(${test} relatedextension kestrel_schema)
  target_compile_definitions(${test} PRIVATE
    KESTREL_RELATED_PLUGIN="$<TARGET_FILE:relatedextension>"
    KESTREL_RELATED_DESCRIPTION="${CMAKE_SOURCE_DIR}/extensions/related/video_youtuberelatedextension.desktop")
endforeach()
kestrel_test(related_large LABELS integration SOURCES related_large.cpp ${CMAKE_SOURCE_DIR}/tests/bench/relatedlibrary.cpp
  LINK kestrel_related PkgConfig::TRACKER PkgConfig::GIO)
target_include_directories(related_large PRIVATE ${CMAKE_SOURCE_DIR}/tests)
add_dependencies(related_large kestrel-store)
