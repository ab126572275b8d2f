# One interface target carries the flags of every target of the project.
add_library(tw_flags INTERFACE)
add_library(Tabweave::flags ALIAS tw_flags)

target_compile_definitions(tw_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_KEYWORDS QT_NO_FOREACH QT_STRICT_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
target_compile_options(tw_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual -Wnon-virtual-dtor -Wold-style-cast)
if(TABWEAVE_WERROR)
    target_compile_options(tw_flags INTERFACE -Werror)
endif()
if(TABWEAVE_SANITIZE)
    target_compile_options(tw_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(tw_flags INTERFACE -fsanitize=address,undefined)
endif()

find_program(TABWEAVE_MOLD mold)
if(TABWEAVE_MOLD)
    target_link_options(tw_flags INTERFACE -fuse-ld=mold)
endif()

find_program(TABWEAVE_CCACHE ccache)
if(TABWEAVE_CCACHE)
    # Precompiled headers need the two relaxations, or every compilation misses.
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        "${TABWEAVE_CCACHE}")
    target_compile_options(tw_flags INTERFACE -fpch-preprocess)
endif()
