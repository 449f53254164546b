# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(app_service SOURCES app_service.cpp ../support/testclips.cpp ../support/testclips.h
  LINK kestrel_store_session LABELS integration TIMEOUT 300)
add_dependencies(app_service kestrel kestrel-store kestrel-thumbnailer kestrel-media-worker)
