# The entry of the daemon under another name, so that tests can call it.
add_library(climate_main OBJECT ../src/main.cpp)
target_compile_definitions(climate_main PRIVATE main=ClimateMain)
target_link_libraries(climate_main PRIVATE hwapi_common)

set(CLIMATE_TESTS_A
  $<TARGET_OBJECTS:climate_main>
  AutonomousClimateControlTest.cpp
  EndpointsTest.cpp
  LifecycleTest.cpp
  MainTest.cpp
  MsgCreationFailedExceptionTest.cpp
  NeighboursTest.cpp
  PsuSpiPollerTest.cpp
  StartUpTest.cpp
  TemperatureVerifierTest.cpp)
