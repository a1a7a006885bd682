# GLEW for the Windows build, compiled from Debian's glew source package that scripts/setup
# unpacks (never committed). Static, so that no glew32.dll has to travel with the programs.
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

add_library(qrn_glew_static STATIC ${QRN_GLEW_SRC}/src/glew.c)
target_compile_definitions(qrn_glew_static PUBLIC GLEW_STATIC)
# SYSTEM: GLEW's headers are not ours to keep free of warnings.
target_include_directories(qrn_glew_static SYSTEM PUBLIC ${QRN_GLEW_SRC}/include)
target_link_libraries(qrn_glew_static PUBLIC opengl32)
