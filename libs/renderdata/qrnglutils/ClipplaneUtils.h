#pragma once

#include "qrngl/SCClipping.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/SCInfo.h"

#include <memory>
#include <string>

namespace qrnglutils {

// What the clip tools share about a plane: how a new one is placed and drawn, how its profile
// is dropped, and how its offset reads.
class QRNGLUTILS_EXPORT ClipplaneUtils {
public:
    // The plane with that normal through the box's centre; fills a quad facing against the
    // normal (towards the part of the model it cuts away) that covers the box's section with
    // a margin, and its border as one closed strip. An empty box or a zero normal gives the
    // plane (0, 0, 0, 0) and leaves both empty.
    static qrnmath::Vec4 createClipPlane(const qrnsg::BBox& box, const qrnmath::Vec3& normal,
                                         std::shared_ptr<qrnsg::Mesh>& mesh,
                                         std::shared_ptr<qrnsg::Polyline>& polyline);
    // Empties the profile: plane clip data, segment containers, hierarchy, selected segment.
    static void clearProfileData(const std::shared_ptr<qrngl::SCClipping>& clipping);
    // The offset of the plane in force from where it was made: along its axis for an axis
    // plane, along its normal as made for a section's (a flip does not change the sign); as
    // text in the document's length unit with that many decimals, "Offset: 12.50 mm". False,
    // leaving text empty, without a plane.
    static bool getOffsetDist(const std::shared_ptr<qrngl::SCClipping>& clipping,
                              const std::shared_ptr<qrnsg::SCInfo>& info, std::wstring& text,
                              int decimals);
    static float getOffset(const qrngl::SCClipping& clipping);
    // Enables or disables the first OpenGL clip plane; returns whether it was enabled.
    static bool toggleClipPlaneState(bool on);
    // Whether any OpenGL clip plane is enabled.
    static bool anyClipPlaneOn();
};

} // namespace qrnglutils
