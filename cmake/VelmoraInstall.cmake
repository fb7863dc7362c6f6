# What an installation holds besides the tool: libraries, headers, and how CMake and pkg-config find
# them.

include(CMakePackageConfigHelpers)

install(TARGETS velmora-support velmora-math velmora-xpr EXPORT VelmoraTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/velmora DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Velmora)
install(EXPORT VelmoraTargets NAMESPACE Velmora:: DESTINATION ${VELMORA_CMAKE_DIR}
    COMPONENT development)
configure_package_config_file(cmake/VelmoraConfig.cmake.in
    "${CMAKE_CURRENT_BINARY_DIR}/VelmoraConfig.cmake" INSTALL_DESTINATION ${VELMORA_CMAKE_DIR})
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/VelmoraConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/VelmoraConfig.cmake"
              "${CMAKE_CURRENT_BINARY_DIR}/VelmoraConfigVersion.cmake"
    DESTINATION ${VELMORA_CMAKE_DIR} COMPONENT development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE VELMORA_PC_TO_PREFIX)
configure_file(cmake/velmora-xpr.pc.in "${CMAKE_CURRENT_BINARY_DIR}/velmora-xpr.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/velmora-xpr.pc"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
