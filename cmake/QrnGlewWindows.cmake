# GLEW for the Windows build, compiled from Debian's glew source package that scripts/setup
# unpacks (never committed). A DLL of its own, as on Linux: one table of entry points for the
# process, so that a glewInit by any library or program serves every library that draws (a
# static copy in each DLL would leave all but the initialising one without extensions).
if(DEFINED ENV{QRN_GLEW_SRC})
  set(qrn_glew_default $ENV{QRN_GLEW_SRC})
else()
  set(qrn_glew_default ${PROJECT_SOURCE_DIR}/.deps/glew)
endif()
set(QRN_GLEW_SRC ${qrn_glew_default} CACHE PATH "Unpacked glew source package for the Windows build")

if(NOT EXISTS ${QRN_GLEW_SRC}/src/glew.c OR NOT EXISTS ${QRN_GLEW_SRC}/include/GL/glew.h)
  message(FATAL_ERROR
    "GLEW sources not found in ${QRN_GLEW_SRC} (need src/glew.c and include/GL/glew.h).\n"
    "Run scripts/setup to fetch them, or point QRN_GLEW_SRC at an unpacked glew source package.")
endif()

add_library(qrn_glew SHARED ${QRN_GLEW_SRC}/src/glew.c)
target_compile_definitions(qrn_glew PRIVATE GLEW_BUILD)
set_target_properties(qrn_glew PROPERTIES OUTPUT_NAME glew32 PREFIX "")
# SYSTEM: GLEW's headers are not ours to keep free of warnings.
target_include_directories(qrn_glew SYSTEM PUBLIC $<BUILD_INTERFACE:${QRN_GLEW_SRC}/include>)
target_link_libraries(qrn_glew PUBLIC opengl32)
# GLEW brings its own DLL entry point and needs no C runtime, as its own makefile builds it.
target_link_options(qrn_glew PRIVATE -nostdlib)
target_link_libraries(qrn_glew PRIVATE gdi32 user32 kernel32)
# Beside the libraries and programs that load it.
install(TARGETS qrn_glew RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
