#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsgutils/qrnsgutils_export.h"

#include <cstddef>

namespace qrnsgutils {

// The one walk over the primitives of a kind that the frame, the pick passes, the capping
// passes and the bounds share, so that they never disagree about what is shown and where.
class QRNSGUTILS_EXPORT InstanceWalker {
public:
    struct Instance {
        int id = 0;
        int drawable = 0;
        int material = -1;
        unsigned char flags = 0;
        const qrnmath::Mat4* transform = nullptr; // null when the primitive has none
    };

    // The instance of a primitive when it names a drawable below `drawables` and is shown
    // (or hidden too, when not `shownOnly`).
    static bool visible(const qrnsg::RTState& state, int id, std::size_t drawables,
                        Instance& instance, bool shownOnly = true);

    // Visits the shown primitives (all, when not `shownOnly`) in draw order.
    template <class Visit>
    static void walk(const qrnsg::RTState& state, std::size_t drawables, Visit&& visit,
                     bool shownOnly = true) {
        Instance instance;
        for (int id : state.drawOrder)
            if (visible(state, id, drawables, instance, shownOnly))
                visit(static_cast<const Instance&>(instance));
    }
};

} // namespace qrnsgutils
