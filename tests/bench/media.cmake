# SPDX-License-Identifier: GPL-3.0-or-later
# The window that bench_playback.py and bench_tap.py measure.
kestrel_program(bench_videowindow SOURCES bench_videowindow.cpp LINK kestrel_media)
# The moves that bench_seek.py and bench_scrub.py measure.
kestrel_program(bench_videoplaces SOURCES bench_videoplaces.cpp LINK kestrel_media)
kestrel_program(bench_resume SOURCES bench_resume.cpp LINK kestrel_media)
target_include_directories(bench_resume PRIVATE ${CMAKE_SOURCE_DIR}/tests)
