# Finds Android's log library and offers it as AndroidLog::log: the platform's own on Android,
# Debian's port (android-liblog-dev) elsewhere, which lies outside the default directories.
if(ANDROID)  # among the compiler's own headers and libraries
  if(NOT TARGET AndroidLog::log)
    add_library(AndroidLog::log INTERFACE IMPORTED)
    set_target_properties(AndroidLog::log PROPERTIES INTERFACE_LINK_LIBRARIES log)
  endif()
  set(AndroidLog_FOUND TRUE)
  return()
endif()

find_path(AndroidLog_INCLUDE_DIR android/log.h PATH_SUFFIXES android)
find_library(AndroidLog_LIBRARY log
  PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE} PATH_SUFFIXES android)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(AndroidLog
  REQUIRED_VARS AndroidLog_LIBRARY AndroidLog_INCLUDE_DIR)
if(AndroidLog_FOUND AND NOT TARGET AndroidLog::log)
  add_library(AndroidLog::log SHARED IMPORTED)
  set_target_properties(AndroidLog::log PROPERTIES
    IMPORTED_LOCATION "${AndroidLog_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${AndroidLog_INCLUDE_DIR}")
endif()
