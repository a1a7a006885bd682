#include "qrnglutils/MarkupUtils.h"

#include "qrnglutils/MeasureUtils.h"

#include <algorithm>
#include <cstdio>

namespace qrnglutils {

using qrnmath::Vec3;

namespace {

std::wstring coordinate(const wchar_t* axis, double value) {
    wchar_t text[64];
    std::swprintf(text, 64, L" %ls : %.3f", axis, value);
    std::wstring out = text;
    return out;
}

} // namespace

std::vector<MarkupUtils::LabelLine> MarkupUtils::labelLayout(const qrnsg::Measure& measure, float x,
                                                             float y, int lineHeight) {
    const float h = static_cast<float>(lineHeight);
    std::vector<LabelLine> lines;
    if (measure.kind != qrnsg::Measure::DISTANCE) {
        lines.push_back({x, y + 3.0f, L" Point  (" + measure.name + L")"});
        // The text holds the three coordinate lines.
        std::size_t start = 0;
        for (int i = 1; i <= 3 && start <= measure.text.size(); ++i) {
            const std::size_t end = measure.text.find(L'\n', start);
            lines.push_back(
                {x, y - h * static_cast<float>(i), measure.text.substr(start, end - start)});
            start = end == std::wstring::npos ? measure.text.size() + 1 : end + 1;
        }
        return lines;
    }
    std::size_t start = 0;
    for (int i = 0; start <= measure.text.size(); ++i) {
        const std::size_t end = measure.text.find(L'\n', start);
        lines.push_back({x + 2.0f, y - h + 2.0f - h * static_cast<float>(i),
                         measure.text.substr(start, end - start)});
        if (end == std::wstring::npos)
            break;
        start = end + 1;
    }
    return lines;
}

void MarkupUtils::createMeasureBkGeometry(const Vec3& screen, const qrnsg::Measure& measure,
                                          const qrngl::Font& font, qrnsg::Mesh& background,
                                          qrnsg::Polyline& frame) {
    const int h = std::max(font.lineHeight(), 1);
    const auto lines = labelLayout(measure, screen[0], screen[1], h);
    float x0 = screen[0], x1 = screen[0], y0 = screen[1], y1 = screen[1];
    for (const auto& line : lines) {
        x0 = std::min(x0, line.x);
        x1 = std::max(x1, line.x + font.width(line.text));
        // A line's box: its descent below the baseline, its ascent above.
        y0 = std::min(y0, line.y - 0.25f * static_cast<float>(h));
        y1 = std::max(y1, line.y + 0.85f * static_cast<float>(h));
    }
    x0 -= 2.0f;
    x1 += 3.0f;
    y0 -= 2.0f;
    y1 += 1.0f;
    background = qrnsg::Mesh();
    background.vertices = {Vec3(x0, y0, 0), Vec3(x1, y0, 0), Vec3(x1, y1, 0), Vec3(x0, y1, 0)};
    background.normals.assign(4, Vec3(0, 0, 1));
    background.indices = {0, 1, 2, 0, 2, 3};
    frame = qrnsg::Polyline();
    frame.addStrip({background.vertices[0], background.vertices[1], background.vertices[2],
                    background.vertices[3], background.vertices[0]});
}

qrnsg::Measure MarkupUtils::createMeasureLineMarkup(const Vec3& first, const Vec3& second,
                                                    const Vec3& normal,
                                                    const qrngl::SCMeasure& measure,
                                                    const qrnsg::SCInfo& info) {
    qrnsg::Measure m;
    m.kind = qrnsg::Measure::DISTANCE;
    m.points = {first, second};
    m.normal = normal;
    m.anchor = (first + second) * 0.5f;
    MeasureUtils::formatLength(first.distance(second), qrngl::MeasureRT::DISTANCE, measure, info,
                               m.text);
    const Vec3 d = second - first;
    if (MeasureUtils::shouldCreateDelta(d[0], d[1], d[2])) {
        const qrngl::MeasureRT::MType kinds[] = {
            qrngl::MeasureRT::DELTA_X, qrngl::MeasureRT::DELTA_Y, qrngl::MeasureRT::DELTA_Z};
        for (int i = 0; i < 3; ++i) {
            m.text += L"\n";
            MeasureUtils::formatLength(d[i], kinds[i], measure, info, m.text);
        }
    }
    return m;
}

qrnsg::Measure MarkupUtils::createMeasurePointMarkup(const Vec3& point, const Vec3& normal,
                                                     const std::wstring& name,
                                                     const qrngl::SCMeasure& measure,
                                                     const qrnsg::SCInfo& info) {
    qrnsg::Measure m;
    m.kind = qrnsg::Measure::POINT;
    m.name = name;
    m.anchor = point;
    m.normal = normal;
    m.points = {point};
    qrnsg::SCInfo::UNITS unit;
    double factor = 1.0;
    int precision = 1;
    MeasureUtils::displayUnit(measure, info, unit, factor, precision);
    m.text = coordinate(L"X", point[0] * factor) + L"\n" + coordinate(L"Y", point[1] * factor) +
             L"\n" + coordinate(L"Z", point[2] * factor);
    return m;
}

} // namespace qrnglutils
