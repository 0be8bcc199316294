# Finds the OpenCV 4 components core, imgproc and (on request) others and offers them as
# SegcoreOpenCV::<component>.
#
# Debian splits OpenCV by module, and only its full development package ships a CMake configuration;
# that one pulls in a desktop toolkit and a visualisation library. So a configuration is used where
# one is installed, and headers and libraries are looked up otherwise.
find_package(OpenCV 4 CONFIG QUIET COMPONENTS ${SegcoreOpenCV_FIND_COMPONENTS})

if(OpenCV_FOUND)
  foreach(component IN LISTS SegcoreOpenCV_FIND_COMPONENTS)
    if(NOT TARGET SegcoreOpenCV::${component})
      add_library(SegcoreOpenCV::${component} INTERFACE IMPORTED)
      set_target_properties(SegcoreOpenCV::${component} PROPERTIES
        INTERFACE_LINK_LIBRARIES opencv_${component})
    endif()
  endforeach()
  set(SegcoreOpenCV_FOUND TRUE)
  return()
endif()

find_path(SegcoreOpenCV_INCLUDE_DIR opencv2/core/core_c.h PATH_SUFFIXES opencv4)
set(required SegcoreOpenCV_INCLUDE_DIR)
foreach(component IN LISTS SegcoreOpenCV_FIND_COMPONENTS)
  find_library(SegcoreOpenCV_${component}_LIBRARY opencv_${component})
  list(APPEND required SegcoreOpenCV_${component}_LIBRARY)
endforeach()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SegcoreOpenCV REQUIRED_VARS ${required})
if(SegcoreOpenCV_FOUND)
  foreach(component IN LISTS SegcoreOpenCV_FIND_COMPONENTS)
    if(NOT TARGET SegcoreOpenCV::${component})
      add_library(SegcoreOpenCV::${component} SHARED IMPORTED)
      set_target_properties(SegcoreOpenCV::${component} PROPERTIES
        IMPORTED_LOCATION "${SegcoreOpenCV_${component}_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${SegcoreOpenCV_INCLUDE_DIR}")
      if(NOT component STREQUAL "core")  # the others speak in its types
        set_target_properties(SegcoreOpenCV::${component} PROPERTIES
          INTERFACE_LINK_LIBRARIES SegcoreOpenCV::core)
      endif()
    endif()
  endforeach()
endif()
