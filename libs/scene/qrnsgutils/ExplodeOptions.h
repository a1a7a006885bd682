#pragma once

namespace qrnsgutils {

// How one level of an assembly explodes.
struct ExplodeOptions {
    float distance = 0.0f;               // box distance of the node that owns the level
    unsigned char flag4 = 0;             // handed down unchanged from a level to its children
    unsigned char updateRenderState = 0; // refresh bounds and camera after each node
    unsigned char reportProgress = 0;    // advance the progress after each node
    int axis = 0;                        // 0, 1 or 2: the direction this level explodes along
};

} // namespace qrnsgutils
