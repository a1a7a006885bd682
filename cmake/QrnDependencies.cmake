# Third-party dependencies, all from Debian's packages (see scripts/setup).
# qrn_gl is the one interface target through which everything reaches OpenGL, GLU and GLEW.
add_library(qrn_gl INTERFACE)

if(WIN32)
  include(${CMAKE_CURRENT_LIST_DIR}/QrnGlewWindows.cmake)
  target_link_libraries(qrn_gl INTERFACE qrn_glew opengl32 glu32 gdi32 user32)
else()
  set(OpenGL_GL_PREFERENCE LEGACY)
  find_package(OpenGL REQUIRED COMPONENTS OpenGL EGL)
  find_package(GLEW REQUIRED)
  target_link_libraries(qrn_gl INTERFACE OpenGL::GL OpenGL::GLU OpenGL::EGL GLEW::GLEW)
  # Xlib, for the window contexts on GLX (libGL carries GLX itself).
  find_package(X11 REQUIRED)
  # Glyphs of the outline and label fonts.
  find_package(Freetype REQUIRED)
  find_package(Fontconfig REQUIRED)
  find_package(PNG)
  # Open CASCADE, for the viewer's model import and its modelled demo assembly.
  find_package(OpenCASCADE REQUIRED)
  set(QRN_OCCT_LIBS
    TKXDESTEP TKXDEIGES TKRWMesh TKSTL TKXCAF TKLCAF TKCAF TKVCAF TKXSBase TKSTEP TKIGES
    TKBRep TKMesh TKPrim TKFillet TKBO TKBool TKTopAlgo TKShHealing TKGeomAlgo TKGeomBase
    TKG3d TKG2d TKMath TKernel)
  find_package(benchmark QUIET)
endif()

if(QRN_BUILD_TESTS)
  if(WIN32)
    # GoogleTest built from the sources Debian installs (package googletest), with the cross
    # compiler; it lands in the build folder once and is rebuilt only when it changes.
    set(QRN_GTEST_SRC /usr/src/googletest CACHE PATH "GoogleTest sources for the cross build")
    if(NOT EXISTS ${QRN_GTEST_SRC}/CMakeLists.txt)
      message(FATAL_ERROR "GoogleTest sources not found in ${QRN_GTEST_SRC}; run scripts/setup "
                          "or set QRN_GTEST_SRC.")
    endif()
    set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    add_subdirectory(${QRN_GTEST_SRC} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    # GoogleTest 1.11 and later name their targets GTest:: themselves.
    foreach(t gtest gtest_main gmock gmock_main)
      if(NOT TARGET GTest::${t})
        add_library(GTest::${t} ALIAS ${t})
      endif()
    endforeach()
  else()
    find_package(GTest REQUIRED)
  endif()
  include(GoogleTest)
endif()
