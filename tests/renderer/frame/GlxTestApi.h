#pragma once

// X11 only: puts a recording table in front of the contexts' GLX steps. Every step is recorded
// by name and handed to g_next, which starts as the system's own steps and which a test
// changes to make a step fail. GoogleTest goes before this header: Xlib's macros clash.
#include "qrngl/frame/linux/Glx.h"

#include <string>
#include <vector>

namespace qrntest {

extern std::vector<std::string> g_calls;
extern qrngl::GlxApi g_next;
extern std::vector<int> g_chosenWith; // the last attribute list given to chooseFBConfig

// Installs the recording table for its lifetime.
class ScopedGlx {
public:
    ScopedGlx();
    ~ScopedGlx();
    ScopedGlx(const ScopedGlx&) = delete;
    ScopedGlx& operator=(const ScopedGlx&) = delete;

    // Takes the calls so far, leaving none.
    std::vector<std::string> take();
};

} // namespace qrntest
