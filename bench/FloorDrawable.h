#pragma once

#include "qrnimport/ModelData.h"

namespace qrnbench {

// The floor of a frame: every placed triangle of a model, moved into world space and drawn
// from one buffer with one call.
class FloorDrawable {
public:
    explicit FloorDrawable(const qrnimport::ModelData& model);
    ~FloorDrawable();
    void render() const;
    std::size_t triangleCount() const { return m_count / 3; }

private:
    unsigned int m_vbo = 0;
    unsigned int m_ibo = 0;
    std::size_t m_count = 0;
};

} // namespace qrnbench
