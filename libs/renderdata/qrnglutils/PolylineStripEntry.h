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
    void prepare() const;
    void release();

private:
    mutable std::vector<float> m_points;
    std::vector<int> m_firsts;
    std::vector<int> m_counts;
    bool m_isPoints;
    float m_pointSize;
    mutable unsigned int m_vbo = 0;
    mutable bool m_prepared = false;
};

} // namespace qrnglutils
