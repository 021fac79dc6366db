# SPDX-License-Identifier: Apache-2.0
# What holds for every target: language, visibility, hardening, where things are built.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The build tree is laid out as it is installed, so that everything finds its neighbours alike.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH $ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR})

set(KEP_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined")
if(KEP_SANITIZE)
    add_compile_options(-fsanitize=${KEP_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KEP_SANITIZE})
    if(KEP_SANITIZE MATCHES undefined)
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()

if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-ffat-lto-objects) # the tests link them without it
endif()

# --- Hardening, as Debian's
include(CheckPIESupported)
check_pie_supported()
# The C library's checks need an optimizer; who has set them, in flags or in the compiler, keeps the level.
include(CheckCXXSourceCompiles)
set(CMAKE_TRY_COMPILE_CONFIGURATION ${CMAKE_BUILD_TYPE})
unset(KEP_FORTIFY CACHE) # the build type may be another one than last time
check_cxx_source_compiles("
    #if defined(_FORTIFY_SOURCE) || !defined(__OPTIMIZE__)
    #error left alone
    #endif
    int main() {}" KEP_FORTIFY)
if(KEP_FORTIFY AND NOT KEP_SANITIZE)
    add_compile_options(-D_FORTIFY_SOURCE=3)
endif()
add_compile_options(-fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now)
# A library calls its own functions without looking them up among all that are loaded.
add_link_options(-Wl,-Bsymbolic-functions)

# Log lines name source files; no path of the machine that built them belongs into the result.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(NOT KEP_SANITIZE) # a sanitizer's runtime is found only when the program has been linked
    add_link_options(-Wl,-z,defs)
endif()
