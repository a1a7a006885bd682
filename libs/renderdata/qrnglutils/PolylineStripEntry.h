#pragma once

#include "qrngl/IStripEntry.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/PointSet.h"
#include "qrnsg/Polyline.h"

#include <vector>

namespace qrnglutils {

// The line strips of a polyline (or, as points, a point set) drawn from one buffer object,
// without lighting: lines and points take the current colour.
class QRNGLUTILS_EXPORT PolylineStripEntry : public qrngl::IStripEntry {
public:
    explicit PolylineStripEntry(const qrnsg::Polyline& polyline);
    explicit PolylineStripEntry(const qrnsg::PointSet& points);
    ~PolylineStripEntry() override;
    PolylineStripEntry(const PolylineStripEntry&) = delete;
    PolylineStripEntry& operator=(const PolylineStripEntry&) = delete;

    void render() const override;
    // Ranges of strips (of points for a point set).
    void renderRanges(const std::vector<Range>& ranges,
                      const std::function<void(std::size_t)>& before) const override;
    void prepare() const;
    void release() override;
    // Draws it whole with a colour per point (red, green, blue, alpha bytes), lighting off.
    void renderColoured(const std::vector<unsigned char>& colours) const;
    std::size_t pointCount() const { return m_pointCount; }
    // Each strip's first point and point count.
    const std::vector<int>& stripFirsts() const { return m_firsts; }
    const std::vector<int>& stripCounts() const { return m_counts; }

private:
    void bind() const;
    void unbind() const;

    mutable std::vector<float> m_points;
    std::vector<int> m_firsts; // per strip, short ones included, so that strip indices hold
    std::vector<int> m_counts;
    std::size_t m_pointCount = 0;
    bool m_hasStrips = false;
    bool m_isPoints;
    float m_pointSize;
    mutable unsigned int m_vbo = 0;
    mutable bool m_prepared = false;
};

} // namespace qrnglutils
