# Where the parts lie once they are installed, and how they find each other wherever that is.

# The library's folder as seen from the host program's: ../lib, ../lib64, ../lib/x86_64-linux-gnu ...
file(RELATIVE_PATH LIBRARY_FOLDER_FROM_PROGRAM
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

set(WIA_INCLUDE_FOLDER ${CMAKE_INSTALL_INCLUDEDIR}/windows_installed_applications)
set(WIA_PACKAGE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/windows_installed_applications)

# find_libraries_from(TARGET FOLDER): the installed target looks for libraries in FOLDER, as seen from
# its own, and then where they were found when it was built.
function(find_libraries_from target folder)
    if(APPLE)
        set(own_folder "@loader_path")
    else()
        set(own_folder "$ORIGIN")
    endif()
    set_target_properties(${target} PROPERTIES
        INSTALL_RPATH "${own_folder}/${folder}"
        INSTALL_RPATH_USE_LINK_PATH ON)
endfunction()
