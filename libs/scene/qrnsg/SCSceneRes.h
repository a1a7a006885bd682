#pragma once

#include "qrnsg/BBox.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/Schema.h"
#include "qrnsg/qrnsg_export.h"

#include <vector>

namespace qrnsg {

// Geometry held as the document's resources instead of in the scene component: a document
// carries its geometry one way or the other, and the run-time component's drawable indices
// refer to whichever holds it.
class QRNSG_EXPORT SCSceneRes : public Schema {
public:
    SCSceneRes();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;

    bool empty() const { return meshes.empty() && polylines.empty(); }

    std::vector<Mesh> meshes;
    std::vector<Polyline> polylines;
};

} // namespace qrnsg
