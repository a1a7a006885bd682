#pragma once

#include "qrngl/Camera.h"
#include "qrngl/MeasureRT.h"
#include "qrngl/SCMeasure.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/Polyline.h"
#include "qrnsg/SCInfo.h"

#include <memory>
#include <string>
#include <vector>

namespace qrnglutils {

// What the measuring tools share: value texts, the records of the measurement component and
// the little geometry of leaders and markers.
class QRNGLUTILS_EXPORT MeasureUtils {
public:
    // The unit values are shown in (the settings', or the document's for unit 14), its factor
    // from the coordinates' unit and the decimals (0 reads as 1).
    static void displayUnit(const qrngl::SCMeasure& measure, const qrnsg::SCInfo& info,
                            qrnsg::SCInfo::UNITS& unit, double& factor, int& precision);
    // A length as its label shows it: the number in the display unit at the settings'
    // precision, two blanks, the unit's name; prefixed by the delta kinds' "Δx : " and the
    // like. Appended to out.
    static void formatLength(float value, qrngl::MeasureRT::MType type,
                             const qrngl::SCMeasure& measure, const qrnsg::SCInfo& info,
                             std::wstring& out);
    // An angle in degrees at the settings' precision.
    static std::wstring formatAngle(float radians, const qrngl::SCMeasure& measure);
    // Normalises a fixed-point number text: no "-0.00".
    static void getMsrValueStr(std::wstring& value);
    static bool isMeasureRTPresent(const std::shared_ptr<qrngl::SCMeasure>& measure,
                                   const unsigned int& id);
    // The record a pick of a measurement label names (kind 1, the record's id).
    static bool getSelectedMeasure(const std::shared_ptr<qrngl::SCMeasure>& measure,
                                   const qrngl::EntityPick& pick,
                                   std::shared_ptr<qrngl::MeasureRT>& record);
    // Nonzero for a record whose label lists its X, Y and Z components.
    static int isDeltaMeasurement(const std::shared_ptr<qrngl::MeasureRT>& record);
    // Nonzero when a distance runs along more than one axis (its components say more).
    static int shouldCreateDelta(const float& dx, const float& dy, const float& dz);

    // Window point (origin top left) of a world point, and back at a window depth (0 near).
    static qrnmath::Vec3 screenPoint(const std::shared_ptr<qrngl::Camera>& camera,
                                     const qrnmath::Vec3& world);
    static qrnmath::Vec3 worldPoint(const std::shared_ptr<qrngl::Camera>& camera,
                                    const qrnmath::Vec3& screen);
    // The plane through a point square to a direction (a, b, c, d).
    static qrnmath::Vec4 getPlane(const qrnmath::Vec3& point, const qrnmath::Vec3& normal);
    // A polyline of one strip through the points.
    static qrnsg::Polyline createPolyline(const std::vector<qrnmath::Vec3>& points);
    // A circle of segments around an axis.
    static qrnsg::Polyline getCirclePolyline(const qrnmath::Vec3& centre, const qrnmath::Vec3& axis,
                                             float radius, int segments = 64);
    // Three short strips crossing at a point, size long each.
    static qrnsg::Polyline createCrossAt(const qrnmath::Vec3& point, float size);
};

} // namespace qrnglutils
