#pragma once

#include "qrngl/IStripEntry.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Mesh.h"

#include <cstddef>
#include <vector>

namespace qrngl {

// Which clusters of a closed mesh a still frame draws: those with their sphere inside the
// view and not every triangle facing away from the eye. Not part of the library's interface.
class ClusterCuller {
public:
    // Takes the frame's view: the projection and the model-view matrix in GL state.
    void begin();
    // The triangle ranges of the clusters drawn for one placement, adjacent ones merged; the
    // triangles they hold. Without clusters, the whole mesh in one range.
    std::size_t ranges(const qrnsg::Mesh& mesh, const qrnmath::Mat4* transform,
                       std::vector<IStripEntry::Range>& out) const;

private:
    qrnmath::Mat4 m_projection;
    qrnmath::Mat4 m_view;
};

} // namespace qrngl
