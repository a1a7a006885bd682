# Helpers that give every library the same shape: a shared library with hidden visibility,
# an export header, a qrn:: alias, and install rules into one CMake package.
include(GenerateExportHeader)
include(CMakePackageConfigHelpers)

set_property(GLOBAL PROPERTY QRN_INSTALLED_TARGETS "")

function(qrn_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wno-unused-parameter)
    if(QRN_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
endfunction()

# qrn_add_library(NAME <target> ROOT <include root> [INSTALL_PREFIX <folder>] [EXPORT_NAME <name>]
#                 HEADERS ... SOURCES ... [PUBLIC_DEPS ...] [PRIVATE_DEPS ...])
# Headers are given relative to ROOT; they are the public headers, installed as they are laid out
# (below INSTALL_PREFIX when given, and then included by that path in the build too).
# EXPORT_NAME names the target in the package (qrn::<name>) where it differs from NAME.
function(qrn_add_library)
  cmake_parse_arguments(A "" "NAME;ROOT;INSTALL_PREFIX;EXPORT_NAME" "HEADERS;SOURCES;PUBLIC_DEPS;PRIVATE_DEPS" ${ARGN})
  add_library(${A_NAME} SHARED ${A_SOURCES})
  if(A_EXPORT_NAME)
    set_target_properties(${A_NAME} PROPERTIES EXPORT_NAME ${A_EXPORT_NAME})
    add_library(qrn::${A_EXPORT_NAME} ALIAS ${A_NAME})
  else()
    add_library(qrn::${A_NAME} ALIAS ${A_NAME})
  endif()
  string(TOUPPER ${A_NAME} upper)
  set(export_dir ${CMAKE_BINARY_DIR}/export)
  generate_export_header(${A_NAME}
    BASE_NAME ${upper}
    EXPORT_FILE_NAME ${export_dir}/${A_NAME}/${A_NAME}_export.h)
  target_include_directories(${A_NAME} PUBLIC
    $<BUILD_INTERFACE:${export_dir}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  if(NOT A_INSTALL_PREFIX)
    target_include_directories(${A_NAME} PUBLIC $<BUILD_INTERFACE:${A_ROOT}>)
  endif()
  if(A_INSTALL_PREFIX)
    # Headers named by paths below the prefix: a link named after the prefix leads to ROOT,
    # so that the build and an installed tree both read "<prefix>/frame/Canvas.h".
    set(prefix_dir ${CMAKE_BINARY_DIR}/prefixed/${A_NAME})
    file(MAKE_DIRECTORY ${prefix_dir})
    if(NOT EXISTS ${prefix_dir}/${A_INSTALL_PREFIX})
      file(CREATE_LINK ${A_ROOT} ${prefix_dir}/${A_INSTALL_PREFIX} SYMBOLIC)
    endif()
    target_include_directories(${A_NAME} PUBLIC $<BUILD_INTERFACE:${prefix_dir}>)
  endif()
  target_link_libraries(${A_NAME} PUBLIC ${A_PUBLIC_DEPS} PRIVATE ${A_PRIVATE_DEPS})
  set_target_properties(${A_NAME} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(WIN32)
    # Self-contained DLLs: no MinGW runtime DLLs to ship beside them.
    target_link_options(${A_NAME} PRIVATE -static-libgcc -static-libstdc++)
  endif()
  qrn_warnings(${A_NAME})
  foreach(h ${A_HEADERS})
    get_filename_component(dir ${h} DIRECTORY)
    install(FILES ${A_ROOT}/${h} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${A_INSTALL_PREFIX}/${dir})
  endforeach()
  install(FILES ${export_dir}/${A_NAME}/${A_NAME}_export.h
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${A_NAME})
  install(TARGETS ${A_NAME} EXPORT qrnTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()

function(qrn_install_package)
  install(EXPORT qrnTargets NAMESPACE qrn:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qrn)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qrnConfig.cmake.in
    ${CMAKE_BINARY_DIR}/qrnConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qrn)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/qrnConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/qrnConfig.cmake ${CMAKE_BINARY_DIR}/qrnConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qrn)
endfunction()

# qrn_add_test(NAME <exe> LABEL unit|gl|image SOURCES ... LIBS ...)
# One executable per folder and label. On Linux each GoogleTest case is its own CTest test;
# a cross build registers the executable once, run through the cross-compiling emulator.
# Under the sanitizers, leaks are checked in every test (not in the CTest that runs them).
if(QRN_SANITIZE)
  set(sanitizer_files ${PROJECT_SOURCE_DIR}/tests/sanitizer)
  set(QRN_TEST_ENVIRONMENT ENVIRONMENT
    "ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:suppressions=${sanitizer_files}/asan.supp")
endif()

function(qrn_add_test)
  cmake_parse_arguments(A "" "NAME;LABEL" "SOURCES;LIBS" ${ARGN})
  add_executable(${A_NAME} ${A_SOURCES})
  target_link_libraries(${A_NAME} PRIVATE ${A_LIBS} GTest::gtest GTest::gtest_main)
  qrn_warnings(${A_NAME})
  if(WIN32)
    target_link_options(${A_NAME} PRIVATE -static-libgcc -static-libstdc++)
  endif()
  set(labels ${A_LABEL})
  if(WIN32)
    list(APPEND labels win32)
  endif()
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${A_NAME} COMMAND ${A_NAME})
    set_tests_properties(${A_NAME} PROPERTIES LABELS "${labels}")
  else()
    gtest_discover_tests(${A_NAME}
      DISCOVERY_MODE PRE_TEST
      PROPERTIES LABELS "${labels}" ${QRN_TEST_ENVIRONMENT})
  endif()
endfunction()

# qrn_add_plugin(NAME <target> SOURCES ... LIBS ...)
# A renderer plug-in: a module the host loads at run time by path, exporting only its "create"
# and "destroy" entries (marked with the generated <NAME>_EXPORT). Built and installed beside
# the programs, where the viewer looks for plug-ins, without a "lib" prefix.
function(qrn_add_plugin)
  cmake_parse_arguments(A "" "NAME" "SOURCES;LIBS" ${ARGN})
  add_library(${A_NAME} MODULE ${A_SOURCES})
  string(TOUPPER ${A_NAME} upper)
  set(export_dir ${CMAKE_BINARY_DIR}/export)
  generate_export_header(${A_NAME}
    BASE_NAME ${upper}
    EXPORT_FILE_NAME ${export_dir}/${A_NAME}/${A_NAME}_export.h)
  target_include_directories(${A_NAME} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${export_dir})
  target_link_libraries(${A_NAME} PRIVATE ${A_LIBS})
  set_target_properties(${A_NAME} PROPERTIES PREFIX ""
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  if(WIN32)
    target_link_options(${A_NAME} PRIVATE -static-libgcc -static-libstdc++)
  endif()
  qrn_warnings(${A_NAME})
  install(TARGETS ${A_NAME}
    LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
