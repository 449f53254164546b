# SPDX-License-Identifier: GPL-3.0-or-later
# What an author does who follows docs/extensions.md: with the headers as they are installed, outside of the tree.
kestrel_test(tst_extensiontemplate LABELS integration SOURCES extensions_template.cpp LINK kestrel_extensions)
target_include_directories(tst_extensiontemplate PRIVATE ${CMAKE_SOURCE_DIR}/tests)
target_compile_definitions(tst_extensiontemplate PRIVATE KESTREL_BUILD_DIR="${CMAKE_BINARY_DIR}"
  KESTREL_CMAKE="${CMAKE_COMMAND}" KESTREL_CXX="${CMAKE_CXX_COMPILER}")
