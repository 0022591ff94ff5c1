# The daemon on a board's own platform libraries: CLM_PLATFORM holds them, and in include those of their headers that take
# the place of this tree's. Nothing else of this tree is built but, with a rig, the contract's tests.
foreach(library QIS NUB GARDDAL)
  if(NOT EXISTS ${CLM_PLATFORM}/lib/lib${library}.so)
    message(FATAL_ERROR "There is no ${CLM_PLATFORM}/lib/lib${library}.so; "
      "CLM_PLATFORM names a folder with the board's libQIS.so, libNUB.so and libGARDDAL.so in lib")
  endif()
  add_library(${library} INTERFACE)
  target_link_directories(${library} INTERFACE ${CLM_PLATFORM}/lib)
  target_link_libraries(${library} INTERFACE -l${library})
endforeach()

# Before every folder of a target: a header of the board hides the one of this tree.
include_directories(${CLM_PLATFORM}/include)
add_library(platform_contract INTERFACE)
target_include_directories(platform_contract INTERFACE Platform/include)
add_library(hwapi_common INTERFACE)
target_include_directories(hwapi_common INTERFACE HwapiCommon/include)
target_link_libraries(hwapi_common INTERFACE platform_contract)

add_subdirectory(ClimateS/src)
if(CLM_PLATFORM_RIG)
  include(cmake/Testing.cmake)
  add_subdirectory(Platform/test/contract)
endif()
