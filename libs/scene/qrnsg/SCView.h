#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <array>
#include <string>
#include <vector>

namespace qrnsg {

// The document's views: the standard orientations with the rotation each stands for, and the
// saved views as the model file named and placed them.
class QRNSG_EXPORT SCView : public Schema {
public:
    // The standard orientations of a Z-up model; front looks along +Y. The isometric ones
    // look at a corner from above: ISOMETRIC (the home view) from front right, the others as
    // named.
    enum ORIENTATION {
        ISOMETRIC = 0,
        FRONT,
        BACK,
        LEFT,
        RIGHT,
        TOP,
        BOTTOM,
        ISOMETRIC_FRONT_LEFT,
        ISOMETRIC_BACK_RIGHT,
        ISOMETRIC_BACK_LEFT,
        ORIENTATION_COUNT
    };

    struct View {
        std::wstring name;
        qrnmath::Vec3 eye;
        qrnmath::Vec3 target;
        qrnmath::Vec3 up{0.0f, 0.0f, 1.0f};
        bool orthographic = true;
        float viewHeight = 0.0f; // world units at the target; 0 when the file gives none
        // The PMI items (indices into SCPmi's items) the view shows, when the file lists them.
        bool listsPmi = false;
        std::vector<int> pmiItems;
        // The measurements made in this view, shown only with it.
        std::vector<unsigned int> measures;
    };

    SCView();
    std::shared_ptr<Schema> clone() const override;
    // Drops the saved views; the orientations go back to the standard ones.
    void clear() override;

    // How the host lists views: 0 not at all, 1 a list that grows with new items, 2 a list
    // refreshed whole.
    int mode = 0;

    // The index of the view with this name, or -1.
    int find(const std::wstring& name) const;

    // The camera rotation (world to view, column-major; the view looks down -z with y up)
    // held for an orientation; the identity for a value out of range.
    qrnmath::Mat4 rotation(ORIENTATION orientation) const;
    // The standard rotation of an orientation, as a new component holds it.
    static qrnmath::Mat4 standardRotation(ORIENTATION orientation);

    std::array<qrnmath::Mat4, ORIENTATION_COUNT> orientations;
    std::vector<View> views;
};

} // namespace qrnsg
