# SPDX-License-Identifier: GPL-3.0-or-later
# From a decoder's picture to what the screen shows.
set(PICTURE_SOURCES
  colourmap.cpp
  glpicture.cpp
  glshader.cpp
  gst/pictureshape.cpp
  gst/planarframes.cpp
  gst/videosink.cpp
  picturecolours.cpp
  pictureconverter.cpp
  plainpixels.cpp
  planescaler.cpp
  tonemap.cpp
  uprightimage.cpp
  videosurface.cpp)
# Loops over the pixels of a picture: to be vectorised in every kind of build.
set_source_files_properties(pictureconverter.cpp plainpixels.cpp planescaler.cpp PROPERTIES COMPILE_OPTIONS -O3)
