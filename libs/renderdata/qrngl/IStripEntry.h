#pragma once

#include "qrngldata/qrngldata_export.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace qrngl {

// One prepared drawable of the strip renderer: a mesh, a polyline, a point set or a text whose
// geometry already lives on the GPU, so that drawing it is one draw call.
class QRNGLDATA_EXPORT IStripEntry {
public:
    virtual ~IStripEntry();
    virtual void render() const = 0;
    // Frees the entry's GL objects, with the context that made them current (a document that
    // closes); the entry draws nothing afterwards.
    virtual void release();

    // A part of the drawable: triangles of a mesh, strips of a polyline, points of a point set.
    struct Range {
        unsigned int first = 0;
        unsigned int count = 0;
    };
    // Draws the ranges one after another with the geometry bound once; before(i) runs before
    // range i (a pick pass loads the range's name there). An entry that cannot draw parts
    // draws itself whole once, after before(0).
    virtual void renderRanges(const std::vector<Range>& ranges,
                              const std::function<void(std::size_t)>& before) const;
};

} // namespace qrngl
