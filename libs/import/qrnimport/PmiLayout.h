#pragma once

#include "qrnimport/ModelData.h"
#include "qrnimport/qrnimport_export.h"

namespace qrnimport {

// Places the PMI texts that the file leaves unplaced (semantic PMI has values but no
// positions) as a drawing would: on their annotation plane, out beside the model, each clear
// of the others in its plane, with a leader to what it speaks of ending in an arrow (a filled
// triangle for a datum). Texts the file placed stay; they get a leader when their target lies
// elsewhere. Sizes follow the model's: the em is a fixed share of its diagonal.
class QRNIMPORT_EXPORT PmiLayout {
public:
    // The em of the PMI texts for a model of this diagonal.
    static float textHeight(float diagonal);
    // Lays out the items from `first` on, clear of those before it, beside the model's parts
    // or, where given, beside `bounds` (the geometry of a model not read yet).
    static void arrange(ModelData& model, std::size_t first = 0,
                        const qrnsg::BBox& bounds = qrnsg::BBox());
};

} // namespace qrnimport
