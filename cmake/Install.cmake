# What `cmake --install` puts where: library, headers, and the two descriptions by which other
# builds find them (a CMake package and a pkg-config file). Hosts install themselves.
include(CMakePackageConfigHelpers)

set(segcore_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/SegmentationCore")

install(TARGETS SegmentationCore EXPORT SegmentationCoreTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS SegmentationCoreEngine EXPORT SegmentationCoreEngineTargets)
# The header for hosts; then, for the component `engine`, those that declare something exported and
# those that they include. examples/check_install.sh holds the list against that rule.
foreach(header IN ITEMS
    interface/segmentation_core.h
    colour/alternative_init.h
    colour/color_model.h
    colour/k_means.h
    colour/model_init.h
    colour/model_update.h
    colour/training_data.h
    engine/hybrid.h
    engine/segmentation_request.h
    engine/stage_watcher.h
    graph/block_view.h
    graph/graph.h
    graph/parallel_gc.h
    history/bit_planes.h
    history/marker.h
    history/undo_redo_history.h
    interface/engine_state.h
    path/edge_path.h
    path/min_priority_queue.h
    support/codes.h
    support/export.h
    support/image.h
    support/large_pages.h
    support/timers.h
    support/tracked_memory.h)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/core/${header}"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/SegmentationCore/${folder}")
endforeach()

install(EXPORT SegmentationCoreTargets
  NAMESPACE SegmentationCore::
  DESTINATION "${segcore_package_dir}")
install(EXPORT SegmentationCoreEngineTargets
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
foreach(package IN ITEMS SegmentationCore SegmentationCoreEngine)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in"
    "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${package}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")
