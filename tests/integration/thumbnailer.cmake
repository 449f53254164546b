# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(thumbnailer_test
  SOURCES thumbnailer_test.cpp ../support/testclips.cpp ../support/testclips.h
  LINK kestrel_thumbs Qt6::Gui
  LABELS integration
  TIMEOUT 180)
add_dependencies(thumbnailer_test kestrel-thumbnailer kestrel-media-worker kestrel-media-worker-faulty)
