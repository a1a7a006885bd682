#pragma once

#include <cstddef>
#include <vector>

namespace qrnsg {
class SCScene;
class SCSceneTopo;
class RTState;
} // namespace qrnsg

namespace qrngl {

// The stencil values a frame marks its parts with, so that a part's highlight tints the
// samples where it is the nearest surface instead of drawing its triangles again: the parts
// with the most triangles have values of their own (1 to 254), the rest share 255. Not part
// of the library's interface.
class PartStencil {
public:
    enum : unsigned char { NONE = 0, SHARED = 255 };

    // By mesh primitive id; empty without parts.
    static std::vector<unsigned char> assign(const qrnsg::SCSceneTopo& topology,
                                             const qrnsg::SCScene& scene,
                                             const qrnsg::RTState& meshes);
};

} // namespace qrngl
