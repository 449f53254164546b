# SPDX-License-Identifier: GPL-3.0-or-later
# The real store service with a bus, a home and folders of its own, and a client of its private socket.
add_library(kestrel_store_session STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/storeclient.cpp ${CMAKE_CURRENT_SOURCE_DIR}/storeclient.h
  ${CMAKE_CURRENT_SOURCE_DIR}/storesession.cpp ${CMAKE_CURRENT_SOURCE_DIR}/storesession.h)
target_include_directories(kestrel_store_session PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_compile_definitions(kestrel_store_session PRIVATE KESTREL_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
target_link_libraries(kestrel_store_session
  PUBLIC kestrel_options Qt6::Core Qt6::DBus Qt6::Test PkgConfig::TRACKER PkgConfig::GIO)
add_dependencies(kestrel_store_session kestrel-store)

# The desktop's own file index beside it.
add_library(kestrel_desktop_miner STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/desktopminer.cpp ${CMAKE_CURRENT_SOURCE_DIR}/desktopminer.h)
target_include_directories(kestrel_desktop_miner PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(kestrel_desktop_miner
  PUBLIC kestrel_options Qt6::Core Qt6::Test PkgConfig::TRACKER PkgConfig::GIO)
add_library(kestrel_index_peer STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/indexpeer.cpp ${CMAKE_CURRENT_SOURCE_DIR}/indexpeer.h)
target_include_directories(kestrel_index_peer PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(kestrel_index_peer PUBLIC kestrel_options Qt6::Core PkgConfig::TRACKER PkgConfig::GIO)
