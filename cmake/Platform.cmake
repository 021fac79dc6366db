# SPDX-License-Identifier: Apache-2.0
# A port: includes its platform file, and tells what is wrong with it while it is being configured.
#
# A program that names every entry of the platform's headers is linked in a project of its own, so that it
# does not matter whether the file names libraries that are there or builds them.
get_filename_component(platform_file "${KEP_PLATFORM}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
get_filename_component(platform_name "${platform_file}" NAME_WE)

# kep_platform_mistakes(LINE...): ends the configuration with a line for each mistake.
function(kep_platform_mistakes)
    list(JOIN ARGN "\n  " lines)
    string(REPLACE "<semicolon>" ";" lines "${lines}")
    message(FATAL_ERROR "The platform file ${platform_file} is not usable:\n  ${lines}")
endfunction()

if(NOT EXISTS "${platform_file}")
    message(FATAL_ERROR "KEP_PLATFORM names a file that does not exist: ${platform_file}")
endif()
include("${platform_file}")

# --- The targets
set(mistakes "")
foreach(target_and_part "kepplatform=JSON and log" "kepdevice=middleware, GPIO, sub-microcontroller")
    string(REGEX MATCH "^([^=]+)=(.*)$" all "${target_and_part}")
    set(target ${CMAKE_MATCH_1})
    set(part ${CMAKE_MATCH_2})
    if(NOT TARGET ${target})
        list(APPEND mistakes "it defines no target ${target} (${part})")
        continue()
    endif()
    get_target_property(imported ${target} IMPORTED)
    get_target_property(type ${target} TYPE)
    if(imported AND NOT type STREQUAL "INTERFACE_LIBRARY")
        get_target_property(location ${target} LOCATION)
        if(NOT EXISTS "${location}")
            list(APPEND mistakes "the library of the target ${target} does not exist: ${location}")
        endif()
    endif()
endforeach()
if(mistakes)
    kep_platform_mistakes(${mistakes})
endif()

# --- What the caller has set is set in the other project, too.
set(check_folder ${CMAKE_CURRENT_BINARY_DIR}/platformcheck)
set(settings "")
get_cmake_property(names CACHE_VARIABLES)
foreach(name IN LISTS names)
    get_property(type CACHE ${name} PROPERTY TYPE)
    get_property(help CACHE ${name} PROPERTY HELPSTRING)
    if(type MATCHES "^(BOOL|STRING|PATH|FILEPATH|UNINITIALIZED)$"
        AND (NOT name MATCHES "^CMAKE_" OR name MATCHES "^CMAKE_(CXX_FLAGS|PREFIX_PATH|MODULE_PATH|FIND_ROOT_PATH)"))
        string(APPEND settings "set(${name} [==[${${name}}]==] CACHE STRING \"\")\n")
    endif()
endforeach()
file(WRITE ${check_folder}/settings.cmake "${settings}")

message(STATUS "Checking the platform file ${platform_file}")
unset(KEP_PLATFORM_LINKS CACHE)
try_compile(KEP_PLATFORM_LINKS ${check_folder} ${CMAKE_CURRENT_LIST_DIR}/platformcheck kepplatformcheck
    CMAKE_FLAGS
        "-DKEP_PLATFORM_FILE=${platform_file}"
        "-DKEP_TREE=${PROJECT_SOURCE_DIR}"
        "-DKEP_TREE_VERSION=${PROJECT_VERSION}"
        "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}"
    OUTPUT_VARIABLE said)
if(KEP_PLATFORM_LINKS)
    return()
endif()

# --- What the compiler and the linker said, as a line for each mistake
string(REPLACE ";" "<semicolon>" said "${said}") # no list
# As g++ puts it, and clang++.
string(REGEX MATCHALL "fatal error: ([^\n:]+: No such file|'[^\n']+' file not found)" headers "${said}")
foreach(header IN LISTS headers)
    string(REGEX REPLACE "fatal error: '?([^:']+)[:'].*" "\\1" header "${header}")
    list(APPEND mistakes "no target has the header ${header} in its include directories")
endforeach()

string(REGEX MATCHALL "[^\n]+:[0-9]+:[0-9]+: error: [^\n]+" errors "${said}")
list(APPEND mistakes ${errors})

string(REGEX MATCHALL "undefined (reference to [`']|symbol: )[^\n']+" symbols "${said}")
set(known "") # all symbols of the targets' libraries, hidden ones included
if(symbols AND EXISTS ${check_folder}/libraries.txt)
    file(STRINGS ${check_folder}/libraries.txt libraries)
    execute_process(COMMAND ${CMAKE_NM} -C ${libraries} OUTPUT_VARIABLE known ERROR_QUIET)
endif()
foreach(symbol IN LISTS symbols)
    string(REGEX REPLACE "^undefined (reference to [`']|symbol: )" "" symbol "${symbol}")
    set(target kepdevice)
    if(symbol MATCHES "^(J|Log)")
        set(target kepplatform)
    endif()
    string(FIND "${known}" " t ${symbol}\n" hidden)
    # Types by the names that the headers have for them.
    foreach(type_and_name
        "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >=std::string"
        "std::map<std::string, std::string, std::less<std::string >, std::allocator<std::pair<std::string const, std::string > > >=MwlParams"
        "std::vector<std::string, std::allocator<std::string > >=std::vector<std::string>")
        string(REGEX MATCH "^(.*)=(.*)$" all "${type_and_name}")
        string(REPLACE "${CMAKE_MATCH_1}" "${CMAKE_MATCH_2}" symbol "${symbol}")
    endforeach()
    if(hidden EQUAL -1)
        list(APPEND mistakes "${target} lacks ${symbol}")
    else()
        list(APPEND mistakes "${target} hides ${symbol}: build it with CXX_VISIBILITY_PRESET default")
    endif()
endforeach()
list(REMOVE_DUPLICATES mistakes)
if(NOT mistakes)
    string(REPLACE "\n" "\n  " said "${said}")
    set(mistakes "a program cannot be linked with its targets:\n  ${said}")
endif()
kep_platform_mistakes(${mistakes})
