#pragma once

#include "qrngl/SCPlaneClipData.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Container.h"
#include "qrnsg/Hierarchy.h"
#include "qrnsg/IClipProfiler.h"
#include "qrnsg/Schema.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qrngl {

// The sectioning state of a document: the clip planes (only the first is in force), their
// profiles, and how the cut is shown.
class QRNGLDATA_EXPORT SCClipping : public qrnsg::Schema {
public:
    // Axis planes 0 (normal along -z), 1 (x), 2 (y); 3 the plane of a section view.
    enum PLANETYPE : std::uint32_t { XY = 0, YZ = 1, ZX = 2, SECTION = 3, NONE = 0xFFFFFFFFu };
    // How the cut faces are filled: each in its part's colour, or all in the cap material.
    enum CapMode : int { PART_COLOURS = 0, SINGLE = 1 };

    SCClipping();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    bool hasPlane() const { return !planes.empty(); }

    std::vector<qrnmath::Vec4> planes; // (a, b, c, d), newest first
    std::vector<std::shared_ptr<SCPlaneClipData>> planeClipData;
    qrnsg::Hierarchy profileHierarchy; // plane index to its profile segments
    qrnsg::Container<std::int32_t, std::int32_t> segmentPlane;
    qrnsg::Container<std::int32_t, std::int32_t> segmentNode;  // node clip data index
    qrnsg::Container<std::int32_t, std::int32_t> segmentIndex; // within the node clip data
    std::vector<qrnmath::Mat4> planeMatrices; // moves of the plane's quad and border
    std::vector<qrnmath::Vec3> pointsOnPlane;
    std::vector<PLANETYPE> planeTypes;
    std::int32_t selectedProfile = -1;
    std::int32_t firstProfileName = 0;
    bool capped = true;
    bool showProfile = false;
    bool flipped = false;
    std::shared_ptr<qrnsg::IClipProfiler> profiler;
    CapMode capMode = PART_COLOURS;
    // Caps crossed by lines, as drawings show cut material.
    bool hatched = false;
};

} // namespace qrngl
