# The examples as tests: the README quotes them, and they build and run against an installed library.
add_test(NAME examples.readme_quotes_them
  COMMAND "${CMAKE_CURRENT_LIST_DIR}/check_readme.sh" "${PROJECT_SOURCE_DIR}/README.md")
if(CMAKE_CROSSCOMPILING)
  return()  # the examples are built and run by the machine's own compiler
endif()
add_test(NAME examples.built_against_the_installed_library
  COMMAND "${CMAKE_CURRENT_LIST_DIR}/check_install.sh" "${PROJECT_BINARY_DIR}")
set_tests_properties(examples.built_against_the_installed_library PROPERTIES
  ENVIRONMENT "CC=${CMAKE_C_COMPILER};CXX=${CMAKE_CXX_COMPILER};\
SANITIZE=${SEGCORE_SANITIZE};CLI=${SEGCORE_CLI}")
