#include "qrnglutils/MeasureUtils.h"

#include "qrngl/CameraHelper.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnsgutils/InfoUtils.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace qrnglutils {

using qrnmath::Vec3;

void MeasureUtils::displayUnit(const qrngl::SCMeasure& measure, const qrnsg::SCInfo& info,
                               qrnsg::SCInfo::UNITS& unit, double& factor, int& precision) {
    unit = measure.settings.unit == qrngl::SCMeasure::DOCUMENT_UNIT
               ? info.lengthUnit
               : static_cast<qrnsg::SCInfo::UNITS>(measure.settings.unit);
    factor = qrnsgutils::InfoUtils::toUnit(1.0, info, unit);
    precision = measure.settings.precision == 0 ? 1 : measure.settings.precision;
}

void MeasureUtils::formatLength(float value, qrngl::MeasureRT::MType type,
                                const qrngl::SCMeasure& measure, const qrnsg::SCInfo& info,
                                std::wstring& out) {
    qrnsg::SCInfo::UNITS unit;
    double factor = 1.0;
    int precision = 1;
    displayUnit(measure, info, unit, factor, precision);
    const std::wstring unitText = L" " + qrnsgutils::InfoUtils::getUnitName(unit);
    // Fixed: a radius of 36000 mm reads 36000.00, never 3.6e+04.
    std::wostringstream number;
    number << std::fixed << std::setprecision(precision) << static_cast<double>(value) * factor;
    std::wstring text = number.str();
    getMsrValueStr(text);
    text += L" " + unitText;
    switch (type) {
    case qrngl::MeasureRT::DELTA_X:
        out += L"\u0394x : ";
        break;
    case qrngl::MeasureRT::DELTA_Y:
        out += L"\u0394y : ";
        break;
    case qrngl::MeasureRT::DELTA_Z:
        out += L"\u0394z : ";
        break;
    case qrngl::MeasureRT::NORMAL:
        out += L"N : ";
        break;
    default:
        break;
    }
    out += text;
}

std::wstring MeasureUtils::formatAngle(float radians, const qrngl::SCMeasure& measure) {
    const int precision = measure.settings.precision == 0 ? 1 : measure.settings.precision;
    std::wostringstream number;
    number << std::fixed << std::setprecision(precision)
           << static_cast<double>(radians) * 180.0 / 3.14159265358979323846;
    std::wstring text = number.str();
    getMsrValueStr(text);
    return text + L" deg";
}

void MeasureUtils::getMsrValueStr(std::wstring& value) {
    if (value.empty() || value[0] != L'-')
        return;
    if (value.find_first_not_of(L"0.", 1) == std::wstring::npos)
        value.erase(0, 1);
}

bool MeasureUtils::isMeasureRTPresent(const std::shared_ptr<qrngl::SCMeasure>& measure,
                                      const unsigned int& id) {
    return measure && measure->records.contains(id);
}

bool MeasureUtils::getSelectedMeasure(const std::shared_ptr<qrngl::SCMeasure>& measure,
                                      const qrngl::EntityPick& pick,
                                      std::shared_ptr<qrngl::MeasureRT>& record) {
    if (!measure || pick.first != qrnsg::EntityNames::EDGE_LIKE || pick.second <= 0)
        return false;
    const auto* found = measure->records.find(static_cast<unsigned int>(pick.second));
    if (!found || !*found)
        return false;
    record = *found;
    return true;
}

int MeasureUtils::isDeltaMeasurement(const std::shared_ptr<qrngl::MeasureRT>& record) {
    return record && record->type == qrngl::MeasureRT::DISTANCE && record->delta.valid ? 1 : 0;
}

int MeasureUtils::shouldCreateDelta(const float& dx, const float& dy, const float& dz) {
    const float ax = std::fabs(dx), ay = std::fabs(dy), az = std::fabs(dz);
    const float largest = std::max({ax, ay, az});
    if (largest <= 0.0f)
        return 0;
    // Along one axis the distance is its only component.
    const float tolerance = largest * 1e-4f;
    const int along = (ax > tolerance) + (ay > tolerance) + (az > tolerance);
    return along > 1 ? 1 : 0;
}

Vec3 MeasureUtils::screenPoint(const std::shared_ptr<qrngl::Camera>& camera, const Vec3& world) {
    return qrnmath::MatrixUtils::transformPoint(qrngl::CameraHelper::getModelToScreen(camera),
                                                world);
}

Vec3 MeasureUtils::worldPoint(const std::shared_ptr<qrngl::Camera>& camera, const Vec3& screen) {
    return qrnmath::MatrixUtils::transformPoint(
        qrnmath::MatrixUtils::inverse(qrngl::CameraHelper::getModelToScreen(camera), 1e-11f),
        screen);
}

qrnmath::Vec4 MeasureUtils::getPlane(const Vec3& point, const Vec3& normal) {
    return qrnmath::PlaneUtils::fromPointNormal(point, normal.normalized());
}

qrnsg::Polyline MeasureUtils::createPolyline(const std::vector<Vec3>& points) {
    qrnsg::Polyline line;
    line.addStrip(points);
    return line;
}

qrnsg::Polyline MeasureUtils::getCirclePolyline(const Vec3& centre, const Vec3& axis, float radius,
                                                int segments) {
    const Vec3 n = axis.normalized();
    const Vec3 seed = std::fabs(n[0]) < 0.9f ? Vec3(1, 0, 0) : Vec3(0, 1, 0);
    const Vec3 u = qrnmath::cross(n, seed).normalized();
    const Vec3 v = qrnmath::cross(n, u);
    std::vector<Vec3> points;
    const int count = std::max(segments, 3);
    for (int i = 0; i <= count; ++i) {
        const float a = 2.0f * 3.14159265f * static_cast<float>(i) / static_cast<float>(count);
        points.push_back(centre + (u * std::cos(a) + v * std::sin(a)) * radius);
    }
    return createPolyline(points);
}

qrnsg::Polyline MeasureUtils::createCrossAt(const Vec3& point, float size) {
    qrnsg::Polyline cross;
    const float h = size / 2.0f;
    for (const Vec3& d : {Vec3(h, 0, 0), Vec3(0, h, 0), Vec3(0, 0, h)})
        cross.addStrip({point - d, point + d});
    return cross;
}

} // namespace qrnglutils
