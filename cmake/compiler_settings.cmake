# How this project's targets are compiled. Variables set here hold for its folders only; a project
# that adds this one as a subfolder keeps its own.
if(NOT CMAKE_CXX_STANDARD)
    set(CMAKE_CXX_STANDARD 17)
endif()
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)

if(WIA_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(CCACHE_PROGRAM ccache)
    if(CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    endif()
endif()

# The warnings, sanitizers and strict Qt settings of every target.
add_library(project_settings INTERFACE)

target_compile_features(project_settings INTERFACE cxx_std_17)

target_compile_options(project_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wformat=2 -Wundef -Wunused
    # Qt Test's macros leave their variadic argument out.
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op -Wduplicated-cond -Wduplicated-branches>
    $<$<BOOL:${WIA_WARNINGS_AS_ERRORS}>:-Werror>)

# Else a header that ccache brings back looks newer than what was compiled with it.
if(WIA_PRECOMPILED_HEADERS)
    target_compile_options(project_settings INTERFACE
        "$<$<COMPILE_LANG_AND_ID:CXX,Clang,AppleClang>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

# share_compiled_headers(TARGET): compiles what most sources of the target include once. Builds without
# WIA_PRECOMPILED_HEADERS show whether a source includes what it uses.
function(share_compiled_headers target)
    if(WIA_PRECOMPILED_HEADERS)
        target_precompile_headers(${target} PRIVATE
            <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QJsonArray> <QJsonObject> <QList> <QString>
            <QStringList> <algorithm> <functional> <map> <memory> <optional> <string> <string_view> <vector>)
    endif()
endfunction()

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
