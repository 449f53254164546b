# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(media_pulseroute SOURCES media_pulseroute.cpp ../support/testclips.cpp ../support/testclips.h
  LINK kestrel_media LABELS integration TIMEOUT 180)
target_link_libraries(media_pulseroute PRIVATE PkgConfig::PULSE)
target_include_directories(media_pulseroute PRIVATE ${CMAKE_SOURCE_DIR}/tests)

# Streams from servers of the tests' own.
find_program(KESTREL_PYTHON NAMES /usr/bin/python3 python3 REQUIRED)
function(kestrel_media_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK" ${ARGN})
  kestrel_test(${name} SOURCES ${name}.cpp ${ARG_SOURCES} ../support/testclips.cpp ../support/testclips.h
    LINK kestrel_media Qt6::Network ${ARG_LINK} LABELS integration TIMEOUT ${ARG_TIMEOUT})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE KESTREL_PYTHON="${KESTREL_PYTHON}")
endfunction()
kestrel_media_test(media_webfaults TIMEOUT 240)
kestrel_media_test(media_streams TIMEOUT 240)
kestrel_media_test(media_live TIMEOUT 240)
kestrel_media_test(media_rtsp TIMEOUT 240)
kestrel_media_test(media_tls SOURCES ../support/mountnamespace.cpp ../support/mountnamespace.h TIMEOUT 180)
kestrel_media_test(media_protected TIMEOUT 180)
kestrel_media_test(media_codecs LINK PkgConfig::GSTREAMER TIMEOUT 180)
kestrel_media_test(media_sound TIMEOUT 180)
kestrel_media_test(media_emptystreams LINK PkgConfig::GSTREAMER TIMEOUT 180)
kestrel_media_test(media_badinput SOURCES ../support/faultcollection.cpp ../support/faultcollection.h TIMEOUT 240)
