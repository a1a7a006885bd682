#pragma once

// The project's one way to reach OpenGL, GLU and the extension entry points.
#include <GL/glew.h>
#ifndef GLEW_NO_GLU
#include <GL/glu.h>
#endif
