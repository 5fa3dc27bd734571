# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` puts into a prefix: the libraries, the public headers, and how other builds
# find them. Nothing that is installed names the folder of the build, so a prefix may be moved.

include(CMakePackageConfigHelpers)

# The same names as in an installed package, for those who build the library as part of their own.
add_library(headsetmgmt::headsetmgmt ALIAS headsetmgmt)
add_library(headsetmgmt::headsetmgmt_core ALIAS headsetmgmt_core)
add_library(headsetmgmt::headsetmgmt_document ALIAS headsetmgmt_document)

install(TARGETS headsetmgmt headsetmgmt_core headsetmgmt_document
    EXPORT headsetmgmtTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# The static libraries go without what only this very compiler reads, link-time optimisation's.
if(CMAKE_STRIP)
    install(CODE "
        get_filename_component(folder \"${CMAKE_INSTALL_LIBDIR}\" ABSOLUTE
            BASE_DIR \"\${CMAKE_INSTALL_PREFIX}\")
        set(folder \"\$ENV{DESTDIR}\${folder}\")
        execute_process(COMMAND \"${CMAKE_STRIP}\" --wildcard --remove-section=.gnu.lto_*
            --remove-section=.gnu.debuglto_* --strip-symbol=__gnu_lto_*
            \"\${folder}/$<TARGET_FILE_NAME:headsetmgmt_core>\"
            \"\${folder}/$<TARGET_FILE_NAME:headsetmgmt_document>\"
            COMMAND_ERROR_IS_FATAL ANY)")
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/headsetmgmt
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/headsetmgmt/export.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/headsetmgmt)

# For find_package(headsetmgmt).
set(headsetmgmt_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/headsetmgmt)
install(EXPORT headsetmgmtTargets
    NAMESPACE headsetmgmt::
    DESTINATION ${headsetmgmt_package_dir})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/headsetmgmtConfig.cmake.in
    ${PROJECT_BINARY_DIR}/headsetmgmtConfig.cmake
    INSTALL_DESTINATION ${headsetmgmt_package_dir})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/headsetmgmtConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/headsetmgmtConfig.cmake
    ${PROJECT_BINARY_DIR}/headsetmgmtConfigVersion.cmake
    DESTINATION ${headsetmgmt_package_dir})

# For pkg-config, which knows the shared library only. The prefix is found from the place of the file.
file(RELATIVE_PATH headsetmgmt_prefix_from_pc
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" headsetmgmt_prefix_from_pc "${headsetmgmt_prefix_from_pc}")
configure_file(
    ${PROJECT_SOURCE_DIR}/cmake/headsetmgmt.pc.in
    ${PROJECT_BINARY_DIR}/headsetmgmt.pc
    @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/headsetmgmt.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
