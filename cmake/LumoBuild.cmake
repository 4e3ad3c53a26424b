# Build helpers shared by every library, application and test of the project.

# Warnings for the project's own code only; third-party headers come in as system includes.
add_library(lumo_warnings INTERFACE)
target_compile_options(lumo_warnings INTERFACE -Wall -Wextra)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # The filters and writers hide itk::ProcessObject's generic SetInput and SetOutput with typed ones on purpose;
  # clang's -Wall reports that, gcc's does not.
  target_compile_options(lumo_warnings INTERFACE -Wno-overloaded-virtual)
endif()

# Every test executable built with SANITIZE is collected here, so that the sanitizer build
# compiles exactly those (cmake --build <dir> --target lumo_sanitize_tests).
add_custom_target(lumo_sanitize_tests)

# Where the Xvfb fixture keeps its display number (Testing/CMakeLists.txt defines the fixture's two tests).
set(LUMO_XVFB_FIXTURE "${PROJECT_SOURCE_DIR}/Testing/Fixtures/xvfb-fixture")
set(LUMO_XVFB_STATE "${PROJECT_BINARY_DIR}/xvfb")

# lumo_add_gtest(<name> SOURCES <files...> LIBRARIES <libs...> [INCLUDES <dirs...>] [SANITIZE] [LABELS <labels...>]
#                [DISPLAY])
# Adds a GoogleTest executable and registers its cases with CTest. In a sanitizer build only the
# tests marked SANITIZE are added. DISPLAY tests need an X server and run inside the Xvfb fixture.
function(lumo_add_gtest name)
  cmake_parse_arguments(ARG "SANITIZE;DISPLAY" "" "SOURCES;LIBRARIES;LABELS;INCLUDES" ${ARGN})
  if(NOT LUMO_BUILD_TESTING)
    return()
  endif()
  if(LUMO_SANITIZE AND NOT ARG_SANITIZE)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest GTest::gtest_main lumo_warnings)
  target_compile_definitions(${name} PRIVATE LUMO_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/Testing/Data")
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Testing/Fixtures" ${ARG_INCLUDES})
  set(labels ${ARG_LABELS})
  if(ARG_SANITIZE)
    list(APPEND labels sanitize)
    add_dependencies(lumo_sanitize_tests ${name})
  endif()
  # Labels go last: the discovered tests' properties are written unquoted, so every word after LABELS is a label.
  set(props "")
  if(ARG_DISPLAY)
    list(APPEND props FIXTURES_REQUIRED xvfb)
    # The tests (and their discovery) run through xvfb-exec, which points DISPLAY at the fixture's server.
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR
      "${PROJECT_SOURCE_DIR}/Testing/Fixtures/xvfb-exec;${LUMO_XVFB_STATE}")
  endif()
  list(APPEND props LABELS ${labels})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES ${props})
endfunction()
