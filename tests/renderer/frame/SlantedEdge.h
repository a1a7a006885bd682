#pragma once

// What multisampling shows: a white triangle on black whose long edge is slanted, and the
// grey levels a frame holds (two without multisampling, more along a smoothed edge).
#include "qrngl/GL.h"

#include <set>
#include <vector>

namespace qrntest {

inline void drawSlantedEdge(int size) {
    glViewport(0, 0, size, size);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glColor3f(1, 1, 1);
    glBegin(GL_TRIANGLES);
    glVertex2f(-1, -1);
    glVertex2f(1, -1);
    glVertex2f(-1, 0.7f);
    glEnd();
}

inline std::set<int> greyLevels(int size) {
    std::vector<unsigned char> red(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, size, size, GL_RED, GL_UNSIGNED_BYTE, red.data());
    return std::set<int>(red.begin(), red.end());
}

} // namespace qrntest
