# What `cmake --install` puts in place: the engine's static libraries, their headers and a package
# for find_package(quilo), whose target is quilo::quilo.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quilo)
foreach(library IN ITEMS velkdsp sdif quilo)
    get_target_property(folder ${library} SOURCE_DIR)
    install(TARGETS ${library} EXPORT quilo-targets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(DIRECTORY ${folder}/src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quilo FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT quilo-targets NAMESPACE quilo:: DESTINATION ${package_dir})
file(WRITE ${PROJECT_BINARY_DIR}/quilo-config.cmake
    "include(\"\${CMAKE_CURRENT_LIST_DIR}/quilo-targets.cmake\")\n")
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quilo-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quilo-config.cmake ${PROJECT_BINARY_DIR}/quilo-config-version.cmake
    DESTINATION ${package_dir})
