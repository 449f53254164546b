# SPDX-License-Identifier: GPL-3.0-or-later
kestrel_test(tst_tonemap SOURCES tst_tonemap.cpp LINK kestrel_media)
kestrel_test(tst_videopicture SOURCES tst_videopicture.cpp LINK kestrel_media TIMEOUT 300)
kestrel_test(tst_glpicture SOURCES tst_glpicture.cpp LINK kestrel_media TIMEOUT 300)
kestrel_test(tst_lostcontext SOURCES tst_lostcontext.cpp glxresets.cpp LINK kestrel_media ${CMAKE_DL_LIBS} TIMEOUT 300)
set_target_properties(tst_lostcontext PROPERTIES ENABLE_EXPORTS ON) # it stands in for some functions of the library
