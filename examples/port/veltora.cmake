# SPDX-License-Identifier: Apache-2.0
# The platform file of the Veltora V12, a television that does not exist: what it has of its own, and what it
# takes from the tree. Used with -DKEP_PLATFORM=examples/port/veltora.cmake; docs/porting.md tells of each part.

# What the library knows of this television. A -D on the command line wins.
set(KEP_SOC_KEY VX12 CACHE STRING "The section of kep-config.json that the library reads")
set(KEP_CONFIG_FOLDER /etc/veltora/audio CACHE STRING "Where kep-config.json and device-cap.json are")
set(KEP_CARD hw:V12 CACHE STRING "ALSA's name of the card whose control elements are written")

set(port ${CMAKE_CURRENT_LIST_DIR})
# JSON values and log: those of the tree, or the tree's JSON values with the maker's log behind the platform's header.
option(VELTORA_LOG "Write lines to the maker's log" OFF)
if(NOT VELTORA_LOG)
    add_subdirectory(${PROJECT_SOURCE_DIR}/platform platform)
else()
    set(tree ${PROJECT_SOURCE_DIR}/platform)
    add_library(veltoralog SHARED ${port}/vendor/veltoralog.cpp)
    target_include_directories(veltoralog PUBLIC ${port}/vendor)
    set_target_properties(veltoralog PROPERTIES CXX_VISIBILITY_PRESET default)
    add_library(kepplatform SHARED
        ${port}/platform/log.cpp
        ${tree}/json/jdomparser.cpp
        ${tree}/json/jsonlexicon.cpp
        ${tree}/json/jvalue.cpp
    )
    # The first folder that has a header of some name counts.
    target_include_directories(kepplatform PUBLIC ${port}/platform ${tree}/include PRIVATE ${tree}/json)
    target_link_libraries(kepplatform PRIVATE veltoralog PkgConfig::JSON_C PkgConfig::GLIB)
    set_target_properties(kepplatform PROPERTIES SOVERSION ${KEP_SOVERSION})
    install(TARGETS veltoralog LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
endif()

# The maker's closed library. Here its sources stand for it; a real port names the file:
#   add_library(veltoraaudio SHARED IMPORTED)
#   set_target_properties(veltoraaudio PROPERTIES IMPORTED_LOCATION ${VELTORA_SDK}/lib/libveltoraaudio.so)
add_library(veltoraaudio SHARED ${port}/vendor/veltoraaudio.cpp)
target_include_directories(veltoraaudio PUBLIC ${port}/vendor)
set_target_properties(veltoraaudio PROPERTIES CXX_VISIBILITY_PRESET default)

# Middleware, GPIO and sub-microcontroller: the platform's classes over the maker's calls. The library calls
# them, so they must be visible, and looks for them under the same file name on every television.
add_library(kepdevice SHARED
    ${port}/adapter/amplifier.cpp
    ${port}/adapter/delay.cpp
    ${port}/adapter/gain.cpp
    ${port}/adapter/lines.cpp
    ${port}/adapter/soundengine.cpp
    ${port}/adapter/unit.cpp
)
target_link_libraries(kepdevice PUBLIC kepplatform PRIVATE veltoraaudio)
set_target_properties(kepdevice PROPERTIES CXX_VISIBILITY_PRESET default SOVERSION ${KEP_SOVERSION})

# Only the adapter knows the maker's library, so it is installed beside it.
install(TARGETS veltoraaudio LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
