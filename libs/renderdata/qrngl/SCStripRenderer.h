#pragma once

#include "qrngl/IStripEntry.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Schema.h"

#include <memory>
#include <vector>

namespace qrngl {

// The drawables of the scene, one entry per mesh, polyline, point set and text, indexed by
// the drawable index of the run-time transform pairs.
class QRNGLDATA_EXPORT SCStripRenderer : public qrnsg::Schema {
public:
    SCStripRenderer();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;
    // Frees every entry's GL objects.
    void close() override;

    std::vector<std::shared_ptr<IStripEntry>> meshes;
    // By the same drawable index: the mesh with fewer triangles that frames in motion may
    // draw instead; empty or null where there is none.
    std::vector<std::shared_ptr<IStripEntry>> coarseMeshes;
    std::vector<std::shared_ptr<IStripEntry>> polylines;
    std::vector<std::shared_ptr<IStripEntry>> points;
    std::vector<std::shared_ptr<IStripEntry>> texts;
    // How the last model drawn marked its parts in the stencil buffer, by mesh primitive id:
    // the value its samples hold where that part is the nearest surface. A value from 1 to 254
    // is one part's alone (a highlight then tints those samples instead of drawing the part
    // again), 255 is shared. Only while stencilHoldsParts says so.
    std::vector<unsigned char> partStencil;
    bool stencilHoldsParts = false;
};

} // namespace qrngl
