#pragma once

#include "qrngl/Font.h"
#include "qrngl/SCMeasure.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Measure.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/SCInfo.h"

#include <string>
#include <vector>

namespace qrnglutils {

// Quick measurements as labels: what they say and where their lines and backgrounds go.
class QRNGLUTILS_EXPORT MarkupUtils {
public:
    struct LabelLine {
        float x = 0.0f, y = 0.0f; // baseline start, pixels from the viewport's lower left
        std::wstring text;
    };
    // The lines of a label anchored at (x, y): a point's heading at y + 3 and its X, Y and
    // Z lines one line height apart below; a distance's text from (x + 2, y - h + 2), its
    // further lines below. Coordinates with three decimals, whatever the precision setting.
    static std::vector<LabelLine> labelLayout(const qrnsg::Measure& measure, float x, float y,
                                              int lineHeight);
    // The label's background (two triangles) and frame (a closed strip) around its lines, in
    // the same pixels.
    static void createMeasureBkGeometry(const qrnmath::Vec3& screen, const qrnsg::Measure& measure,
                                        const qrngl::Font& font, qrnsg::Mesh& background,
                                        qrnsg::Polyline& frame);
    // A distance between two picked points: its value in the display unit and, when it runs
    // along more than one axis, its X, Y and Z components.
    static qrnsg::Measure createMeasureLineMarkup(const qrnmath::Vec3& first,
                                                  const qrnmath::Vec3& second,
                                                  const qrnmath::Vec3& normal,
                                                  const qrngl::SCMeasure& measure,
                                                  const qrnsg::SCInfo& info);
    // A picked point named name, its coordinates in the display unit.
    static qrnsg::Measure createMeasurePointMarkup(const qrnmath::Vec3& point,
                                                   const qrnmath::Vec3& normal,
                                                   const std::wstring& name,
                                                   const qrngl::SCMeasure& measure,
                                                   const qrnsg::SCInfo& info);
};

} // namespace qrnglutils
