# Install layout (paths relative to the prefix; LIBDIR is lib unless
# GNUInstallDirs chooses otherwise for /usr):
#   include/velmora.h, velmora_version.h and every other public header
#   lib/libvelmora.so.1.0.0 with its links libvelmora.so.1 and libvelmora.so
#   lib/     the vendor's velmora.jar, commons-codec-1.3.jar, xmlrpc-2.0.jar
#            and an optional VelmoraDLL.conf: the library looks for them in
#            its own directory (installed from VELMORA_SDK_JARS_DIR when set)
#   bin/velmora-doctor
#   lib/cmake/velmora/ (find_package) and lib/pkgconfig/velmora.pc
# The SDK test double goes beside the library only as a demo SDK: with
# -DVELMORA_INSTALL_DEMO_SDK=ON, or on request (cmake --install --component demo)
# from a build that has it.
include(CMakePackageConfigHelpers)

set(VELMORA_SDK_JARS_DIR "" CACHE PATH
  "Directory holding the vendor's velmora.jar, commons-codec-1.3.jar, xmlrpc-2.0.jar (and optionally VelmoraDLL.conf) to install beside the library")

install(TARGETS velmora EXPORT velmoraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS velmora-doctor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
install(FILES ${VELMORA_GENERATED_INCLUDE_DIR}/velmora_version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES ${VELMORA_CXX_FUNCTIONS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velmora COMPONENT development)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

if(VELMORA_SDK_JARS_DIR)
  install(FILES ${VELMORA_SDK_JARS_DIR}/velmora.jar ${VELMORA_SDK_JARS_DIR}/commons-codec-1.3.jar
    ${VELMORA_SDK_JARS_DIR}/xmlrpc-2.0.jar DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
  install(FILES ${VELMORA_SDK_JARS_DIR}/VelmoraDLL.conf DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime OPTIONAL)
endif()

option(VELMORA_INSTALL_DEMO_SDK
  "Install this project's SDK test double beside the library as a demo SDK, to try every call without the vendor's jars" OFF)
if(VELMORA_INSTALL_DEMO_SDK AND VELMORA_SDK_JARS_DIR)
  message(FATAL_ERROR "VELMORA_INSTALL_DEMO_SDK and VELMORA_SDK_JARS_DIR both install a velmora.jar: choose one")
endif()
if(VELMORA_INSTALL_DEMO_SDK AND NOT TARGET velmora_sdk_double)
  add_subdirectory(tests/sdk)
endif()
if(TARGET velmora_sdk_double)
  set(demo_only_on_request EXCLUDE_FROM_ALL)
  if(VELMORA_INSTALL_DEMO_SDK)
    set(demo_only_on_request)
  endif()
  install(FILES ${VELMORA_LIB_DIR}/velmora.jar DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT demo
    ${demo_only_on_request})
endif()

# find_package(velmora 1.0 REQUIRED) -> velmora::velmora
set(VELMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/velmora)
install(EXPORT velmoraTargets NAMESPACE velmora:: DESTINATION ${VELMORA_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/velmoraConfig.cmake.in ${PROJECT_BINARY_DIR}/velmoraConfig.cmake
  INSTALL_DESTINATION ${VELMORA_CMAKE_DIR} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velmoraConfig.cmake ${PROJECT_BINARY_DIR}/velmoraConfigVersion.cmake
  DESTINATION ${VELMORA_CMAKE_DIR} COMPONENT development)

# pkg-config: prefix relative to the .pc file, so `cmake --install --prefix`
# anywhere gives a working file.
set(VELMORA_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH VELMORA_PC_TO_PREFIX /${VELMORA_PKGCONFIG_DIR} /)
string(REGEX REPLACE "/$" "" VELMORA_PC_TO_PREFIX "${VELMORA_PC_TO_PREFIX}")
configure_file(cmake/velmora.pc.in ${PROJECT_BINARY_DIR}/velmora.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velmora.pc DESTINATION ${VELMORA_PKGCONFIG_DIR} COMPONENT development)
