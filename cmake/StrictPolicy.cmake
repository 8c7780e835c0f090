# One place for the language level, warnings and strict Qt defines.
# Every product target links tallyfen_strict; tests link tallyfen_strict_tests, which
# differs only in letting string literals (and nothing else) become QStrings.
add_library(tallyfen_strict_common INTERFACE)
target_compile_features(tallyfen_strict_common INTERFACE cxx_std_20)
target_compile_definitions(tallyfen_strict_common INTERFACE
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_CONTEXTLESS_CONNECT
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_FOREACH
    QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_UP_TO=0x060400)
if(MSVC)
    target_compile_options(tallyfen_strict_common INTERFACE /W4 /permissive-)
else()
    target_compile_options(tallyfen_strict_common INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
        -Wunused -Woverloaded-virtual -Wconversion -Wsign-conversion -Wnull-dereference
        -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough
        # Designated initializers that leave members at their defaults are intended.
        -Wno-missing-field-initializers)
    if(NOT APPLE)
        # Link only the libraries a binary really uses: fewer to load at start-up.
        target_link_options(tallyfen_strict_common INTERFACE -Wl,--as-needed)
    endif()
    if(TALLYFEN_WERROR)
        target_compile_options(tallyfen_strict_common INTERFACE -Werror)
    endif()
endif()

add_library(tallyfen_strict INTERFACE)
target_link_libraries(tallyfen_strict INTERFACE tallyfen_strict_common)
target_compile_definitions(tallyfen_strict INTERFACE QT_NO_CAST_FROM_ASCII)

add_library(tallyfen_strict_tests INTERFACE)
target_link_libraries(tallyfen_strict_tests INTERFACE tallyfen_strict_common)
target_compile_definitions(tallyfen_strict_tests INTERFACE QT_RESTRICTED_CAST_FROM_ASCII)
