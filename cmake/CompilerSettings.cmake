# What every target is compiled with, on every preset.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# 64-bit file offsets and times also where a word has 32 bits: the daemon must outlive 2038.
add_compile_definitions(_GNU_SOURCE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wformat=2 -Wcast-align -Wold-style-cast
                    -Wnon-virtual-dtor -Woverloaded-virtual -Wundef)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # Cries wolf on "literal" + std::string (GCC bug 105651).
    add_compile_options(-Wno-restrict)
    # Tells the compiler cache which precompiled header a file uses.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fpch-preprocess>)
endif()
if(CORVANE_WARNINGS_ARE_ERRORS)
    add_compile_options(-Werror)
endif()

if(CORVANE_SANITIZE)
    add_compile_options(-fsanitize=${CORVANE_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${CORVANE_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # The sanitizers' own code makes GCC 12 doubt every std::variant.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()

# A compiler cache makes the second build of a preset a matter of seconds.
find_program(CORVANE_CCACHE ccache)
if(CORVANE_CCACHE)
    # Paths below the checkout count as relative, so that every checkout shares what one has built.
    # The sloppiness is what precompiled headers take (ccache's manual, "Precompiled headers").
    set(CORVANE_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}
        CCACHE_NOHASHDIR=true CCACHE_SLOPPINESS=pch_defines,time_macros ${CORVANE_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${CORVANE_LAUNCHER})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CORVANE_LAUNCHER})
endif()
