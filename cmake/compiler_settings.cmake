# The warnings, sanitizers and strict Qt settings that every target of the project is built with.
add_library(project_settings INTERFACE)

target_compile_features(project_settings INTERFACE cxx_std_17)

target_compile_options(project_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Wunused
    # Qt Test's macros leave their variadic argument out.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op -Wduplicated-cond -Wduplicated-branches>
    $<$<BOOL:${WIA_WARNINGS_AS_ERRORS}>:-Werror>)

# Texts of evidence never pass through an implicit encoding.
target_compile_definitions(project_settings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH QT_NO_JAVA_STYLE_ITERATORS
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(WIA_SANITIZERS)
    target_compile_options(project_settings INTERFACE
        -fsanitize=${WIA_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(project_settings INTERFACE -fsanitize=${WIA_SANITIZERS})
endif()
