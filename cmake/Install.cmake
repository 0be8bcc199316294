# What `cmake --install` puts where: library, headers, and the two descriptions by which other
# builds find them (a CMake package and a pkg-config file). Hosts install themselves.
include(CMakePackageConfigHelpers)

set(segcore_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/SegmentationCore")

install(TARGETS SegmentationCore EXPORT SegmentationCoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/core/"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/SegmentationCore"
  FILES_MATCHING PATTERN "*.h"
  # The library's own plumbing; nothing in it is exported.
  PATTERN "host_call.h" EXCLUDE
  PATTERN "parked_context.h" EXCLUDE
  PATTERN "history_transaction.h" EXCLUDE
  PATTERN "outline_transaction.h" EXCLUDE)

install(EXPORT SegmentationCoreTargets
  NAMESPACE SegmentationCore::
  DESTINATION "${segcore_package_dir}")
configure_package_config_file(
  "${CMAKE_CURRENT_LIST_DIR}/SegmentationCoreConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/SegmentationCoreConfig.cmake"
  INSTALL_DESTINATION "${segcore_package_dir}")
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/SegmentationCoreConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/SegmentationCoreConfig.cmake"
  "${PROJECT_BINARY_DIR}/SegmentationCoreConfigVersion.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/FindSegcoreOpenCV.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/FindAndroidLog.cmake"
  DESTINATION "${segcore_package_dir}")

# The prefix is known for sure only while installing (`cmake --install --prefix`), and pkg-config can
# work it out from where the file lies.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(SEGCORE_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
  set(SEGCORE_PC_LIBDIR "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(SEGCORE_PC_INCLUDEDIR "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
else()
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(SEGCORE_PC_PREFIX "\${pcfiledir}/${up}")
  set(SEGCORE_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(SEGCORE_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/SegmentationCore.pc.in"
  "${PROJECT_BINARY_DIR}/SegmentationCore.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/SegmentationCore.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")
