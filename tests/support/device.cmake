# SPDX-License-Identifier: GPL-3.0-or-later
# The device as a test says it is.
add_library(kestrel_simulated_device STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/simulateddevice.cpp ${CMAKE_CURRENT_SOURCE_DIR}/simulateddevice.h)
target_include_directories(kestrel_simulated_device PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_link_libraries(kestrel_simulated_device PUBLIC kestrel_system)

# Services of a device on a bus of the test's own.
add_library(kestrel_mock_services STATIC
  ${CMAKE_CURRENT_SOURCE_DIR}/mockservice.cpp ${CMAKE_CURRENT_SOURCE_DIR}/mockservice.h
  ${CMAKE_CURRENT_SOURCE_DIR}/privatebus.h)
target_include_directories(kestrel_mock_services PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
target_compile_definitions(kestrel_mock_services PRIVATE KESTREL_MOCKS_DIR="${CMAKE_CURRENT_SOURCE_DIR}/mocks")
target_link_libraries(kestrel_mock_services PUBLIC kestrel_options Qt6::Core Qt6::DBus Qt6::Test)
