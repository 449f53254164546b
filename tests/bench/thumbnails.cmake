# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_program(bench_thumbnails
  SOURCES bench_thumbnails.cpp ../support/testclips.cpp ../support/testclips.h
  LINK kestrel_thumbs)
add_dependencies(bench_thumbnails kestrel-thumbnailer kestrel-media-worker)
