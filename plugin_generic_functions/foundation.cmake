# Chooses how the property-list readers are built. WIA_FOUNDATION decides: ON demands Foundation, OFF
# leaves it out, AUTO takes it when it is found.
#
# Sets the global property FOUNDATION_BUILT and defines foundation_source(TARGET SOURCE), which adds an
# Objective-C++ source to a target. Such a source is compiled as C++ with a flag, so that the project
# needs no further language and links everything as C++.

include(CheckCXXSourceCompiles)

set(FOUNDATION_COMPILE_FLAGS)
set(FOUNDATION_LIBRARIES)

# GCC brings the runtime's headers; Clang does not look for them there.
function(find_objective_c_runtime_headers result)
    set(${result} PARENT_SCOPE)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        find_program(GCC_PROGRAM gcc)
        if(GCC_PROGRAM)
            execute_process(COMMAND ${GCC_PROGRAM} -print-file-name=include
                OUTPUT_VARIABLE directory OUTPUT_STRIP_TRAILING_WHITESPACE)
            set(${result} -fobjc-runtime=gcc -idirafter ${directory} PARENT_SCOPE)
        endif()
    endif()
endfunction()

# Takes from gnustep-config only the flags that the language and its headers need.
function(find_gnustep)
    find_program(GNUSTEP_CONFIG gnustep-config)
    if(NOT GNUSTEP_CONFIG)
        return()
    endif()
    execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags
        OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    list(FILTER flags INCLUDE REGEX "^-(D|I/|fexceptions|fobjc|fconstant|fno-strict|pthread)")
    list(TRANSFORM flags REPLACE "^-I" "-isystem")
    find_objective_c_runtime_headers(runtime_flags)
    execute_process(COMMAND ${GNUSTEP_CONFIG} --base-libs
        OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE)
    separate_arguments(libraries UNIX_COMMAND "${libraries}")
    list(FILTER libraries INCLUDE REGEX "^-(L/|l)")
    # A library that uses none of these readers should not load GNUstep.
    list(PREPEND libraries "-Wl,--push-state,--as-needed")
    list(APPEND libraries "-Wl,--pop-state")
    set(FOUNDATION_COMPILE_FLAGS ${flags} ${runtime_flags} PARENT_SCOPE)
    set(FOUNDATION_LIBRARIES ${libraries} PARENT_SCOPE)
endfunction()

# Many systems have the headers but no compiler for them, so a source is compiled as a test.
function(check_foundation)
    list(JOIN FOUNDATION_COMPILE_FLAGS " " CMAKE_REQUIRED_FLAGS)
    set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
    # Foundation may have come or gone since the folder was configured last.
    unset(FOUNDATION_COMPILES CACHE)
    check_cxx_source_compiles("
        #import <Foundation/Foundation.h>
        NSString *text() { @try { return @\"text\"; } @catch (id exception) { return nil; } }"
        FOUNDATION_COMPILES)
endfunction()

if(NOT WIA_FOUNDATION STREQUAL "OFF")
    if(APPLE)
        set(FOUNDATION_LIBRARIES "-framework Foundation")
    else()
        find_gnustep()
    endif()
    list(PREPEND FOUNDATION_COMPILE_FLAGS -x objective-c++)
    check_foundation()
endif()

set(foundation_built OFF)
if(WIA_FOUNDATION STREQUAL "OFF")
    message(STATUS "Foundation property-list readers: left out (WIA_FOUNDATION is OFF)")
elseif(FOUNDATION_COMPILES)
    set(foundation_built ON)
    message(STATUS "Foundation property-list readers: built")
elseif(WIA_FOUNDATION STREQUAL "ON")
    message(FATAL_ERROR "WIA_FOUNDATION is ON, but no Foundation can be compiled here")
else()
    message(STATUS "Foundation property-list readers: left out (no Foundation can be compiled)")
endif()
set_property(GLOBAL PROPERTY FOUNDATION_BUILT ${foundation_built})
set_property(GLOBAL PROPERTY FOUNDATION_COMPILE_FLAGS "${FOUNDATION_COMPILE_FLAGS}")
set_property(GLOBAL PROPERTY FOUNDATION_LIBRARIES "${FOUNDATION_LIBRARIES}")

function(foundation_source target source)
    get_property(flags GLOBAL PROPERTY FOUNDATION_COMPILE_FLAGS)
    get_property(libraries GLOBAL PROPERTY FOUNDATION_LIBRARIES)
    set_source_files_properties(${source} PROPERTIES LANGUAGE CXX COMPILE_OPTIONS "${flags}")
    target_sources(${target} PRIVATE ${source})
    target_link_libraries(${target} PRIVATE ${libraries})
endfunction()
