#pragma once

#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"

#include <vector>

namespace qrnsg {

// One or more line strips held together (for example all edges of one part), so that they are
// drawn as one primitive. strips holds the index of each strip's first point.
struct Polyline {
    std::vector<qrnmath::Vec3> points;
    std::vector<unsigned int> strips{0};

    // Adds a strip of at least two points.
    void addStrip(const std::vector<qrnmath::Vec3>& strip) {
        if (strip.size() < 2)
            return;
        if (!points.empty())
            strips.push_back(static_cast<unsigned int>(points.size()));
        points.insert(points.end(), strip.begin(), strip.end());
    }
    // Adds the strips of another polyline after these.
    void append(const Polyline& other) {
        for (std::size_t i = 0; i < other.stripCount(); ++i) {
            const auto begin = other.points.begin() + other.strips[i];
            const auto end = i + 1 < other.stripCount() ? other.points.begin() + other.strips[i + 1]
                                                        : other.points.end();
            addStrip(std::vector<qrnmath::Vec3>(begin, end));
        }
    }
    std::size_t stripCount() const { return points.empty() ? 0 : strips.size(); }
    BBox bbox() const {
        BBox b;
        for (const auto& p : points)
            b.add(p);
        return b;
    }
};

} // namespace qrnsg
