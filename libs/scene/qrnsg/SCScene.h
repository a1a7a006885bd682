#pragma once

#include "qrnsg/MMaterial.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/PLMaterial.h"
#include "qrnsg/PointSet.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/Schema.h"
#include "qrnsg/Text.h"
#include "qrnsg/qrnsg_export.h"

#include <vector>

namespace qrnsg {

// The scene's geometry and materials. Geometry is held by drawable index: the index that the
// run-time transform pairs name and that the strip renderer's entries share.
class QRNSG_EXPORT SCScene : public Schema {
public:
    SCScene();
    std::shared_ptr<Schema> clone() const override;
    void clear() override;
    BBox bbox() const; // of all meshes, polylines and points, untransformed

    std::vector<Mesh> meshes;
    std::vector<Polyline> polylines;
    std::vector<PointSet> points;
    std::vector<Text> texts;
    std::vector<MMaterial> materials;
    std::vector<PLMaterial> plMaterials;
};

} // namespace qrnsg
