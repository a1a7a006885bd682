#pragma once

#include "qrngl/frame/FrameBufferObject.h"

#include <array>
#include <vector>

namespace qrngl {

// A copy of the frame's model, colour, depth and stencil, sample for sample, taken from the
// bound draw frame buffer and put back into it, so that a frame whose model did not change
// draws only its overlays. Not part of the library's interface.
class ModelImage {
public:
    // What a model's image was drawn from, beyond what tools say of their changes: the
    // frame's matrices and viewport, the settings and objects it was drawn with.
    struct Source {
        std::vector<float> numbers;
        std::vector<const void*> objects;
        bool operator==(const Source& o) const {
            return numbers == o.numbers && objects == o.objects;
        }
    };

    // Copies the viewport's rectangle of the bound draw frame buffer, drawn from `source`,
    // with the clip planes and multisampling the overlays find; false where that buffer's
    // formats have no copy here (nothing is kept then, and every frame is drawn in full).
    bool keep(Source source, const GLint viewport[4]);
    // Puts back what was kept from the same source at this viewport, with its clip planes and
    // multisampling.
    bool restore(const Source& source, const GLint viewport[4]) const;
    bool held() const { return m_held; }
    // Forgets the picture; the buffers stay for the next.
    void drop() { m_held = false; }
    // With the context current.
    void release();

private:
    struct ClipPlane {
        GLenum plane;
        std::array<double, 4> equation; // in eye space
    };
    struct Format {
        GLenum colour = 0;
        GLenum depth = 0;
        GLint samples = 0;
        bool operator==(const Format& o) const {
            return colour == o.colour && depth == o.depth && samples == o.samples;
        }
    };
    static bool formatOfBound(Format& format);
    void blit(GLint from, GLint to, const GLint viewport[4]) const;

    FrameBufferObject m_buffer;
    Source m_source;
    std::vector<ClipPlane> m_clipPlanes;
    bool m_multisample = true;
    Format m_format;
    GLint m_width = 0, m_height = 0;
    GLint m_viewport[4] = {};
    bool m_held = false;
};

} // namespace qrngl
