# SPDX-License-Identifier: GPL-3.0-or-later
add_library(kestrel_fake_sparql STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/fakesparqldriver.cpp ${CMAKE_CURRENT_SOURCE_DIR}/fakesparqldriver.h)
target_include_directories(kestrel_fake_sparql PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(kestrel_fake_sparql PUBLIC kestrel_sparql)

# A store service without an indexer, for tests and benchmarks of whatever talks to the store.
# Without the sanitizers, which would stop it inside the store library.
add_executable(kestrel-store-peer ${CMAKE_CURRENT_SOURCE_DIR}/storepeer.cpp)
target_compile_options(kestrel-store-peer PRIVATE -Wall -Wextra -Wpedantic)
target_link_libraries(kestrel-store-peer PRIVATE PkgConfig::TRACKER PkgConfig::GIO)
set_target_properties(kestrel-store-peer PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)

# A test's own hand on that service.
add_library(kestrel_store_peer STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/storepeercontrol.cpp ${CMAKE_CURRENT_SOURCE_DIR}/storepeercontrol.h)
target_include_directories(kestrel_store_peer PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_compile_definitions(kestrel_store_peer PRIVATE KESTREL_STORE_PEER="${CMAKE_BINARY_DIR}/tests/kestrel-store-peer")
target_link_libraries(kestrel_store_peer PUBLIC kestrel_options Qt6::Core Qt6::DBus)
add_dependencies(kestrel_store_peer kestrel-store-peer)
