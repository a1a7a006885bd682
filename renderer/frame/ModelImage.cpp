#include "qrngl/frame/ModelImage.h"

#include <algorithm>

namespace qrngl {

bool ModelImage::formatOfBound(Format& format) {
    GLint red = 0, green = 0, blue = 0, alpha = 0, depth = 0, stencil = 0;
    glGetIntegerv(GL_RED_BITS, &red);
    glGetIntegerv(GL_GREEN_BITS, &green);
    glGetIntegerv(GL_BLUE_BITS, &blue);
    glGetIntegerv(GL_ALPHA_BITS, &alpha);
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    glGetIntegerv(GL_STENCIL_BITS, &stencil);
    glGetIntegerv(GL_SAMPLES, &format.samples);
    if (red == 8 && green == 8 && blue == 8 && (alpha == 0 || alpha == 8))
        format.colour = alpha ? GL_RGBA8 : GL_RGB8;
    else if (red == 10 && green == 10 && blue == 10 && alpha == 2)
        format.colour = GL_RGB10_A2;
    else
        return false;
    if (depth == 24 && stencil == 8)
        format.depth = GL_DEPTH24_STENCIL8;
    else if (depth == 24 && stencil == 0)
        format.depth = GL_DEPTH_COMPONENT24;
    else if (depth == 16 && stencil == 0)
        format.depth = GL_DEPTH_COMPONENT16;
    else
        return false;
    return true;
}

void ModelImage::blit(GLint from, GLint to, const GLint viewport[4]) const {
    // Only the scissor test and the write masks could stand in a copy's way.
    glPushAttrib(GL_SCISSOR_BIT | GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT |
                 GL_STENCIL_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glStencilMask(~0u);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(from));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(to));
    const GLint x1 = viewport[0] + viewport[2], y1 = viewport[1] + viewport[3];
    GLbitfield mask = GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT;
    if (m_format.depth == GL_DEPTH24_STENCIL8)
        mask |= GL_STENCIL_BUFFER_BIT;
    glBlitFramebuffer(viewport[0], viewport[1], x1, y1, viewport[0], viewport[1], x1, y1, mask,
                      GL_NEAREST);
    glPopAttrib();
}

bool ModelImage::keep(Source source, const GLint viewport[4]) {
    m_held = false;
    m_source = std::move(source);
    m_multisample = glIsEnabled(GL_MULTISAMPLE) == GL_TRUE;
    GLint planes = 0;
    glGetIntegerv(GL_MAX_CLIP_PLANES, &planes);
    m_clipPlanes.clear();
    for (GLint i = 0; i < planes; ++i) {
        const auto plane = static_cast<GLenum>(GL_CLIP_PLANE0 + i);
        if (!glIsEnabled(plane))
            continue;
        ClipPlane kept{plane, {}};
        glGetClipPlane(plane, kept.equation.data());
        m_clipPlanes.push_back(kept);
    }
    if (!glBlitFramebuffer || viewport[0] < 0 || viewport[1] < 0 || viewport[2] <= 0 ||
        viewport[3] <= 0)
        return false;
    Format format;
    if (!formatOfBound(format))
        return false;
    GLint draw = 0, read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    const GLint width = viewport[0] + viewport[2], height = viewport[1] + viewport[3];
    if (!m_buffer.framebuffer || !(format == m_format) || width > m_width || height > m_height) {
        m_buffer.destroy();
        m_format = format;
        m_width = std::max(width, m_width);
        m_height = std::max(height, m_height);
        const bool made =
            m_buffer.create(static_cast<unsigned int>(m_width), static_cast<unsigned int>(m_height),
                            format.samples, false, format.colour, format.depth);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw));
        if (!made) {
            m_width = m_height = 0;
            return false;
        }
    }
    blit(draw, static_cast<GLint>(m_buffer.framebuffer), viewport);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw));
    std::copy(viewport, viewport + 4, m_viewport);
    m_held = true;
    return true;
}

bool ModelImage::restore(const Source& source, const GLint viewport[4]) const {
    if (!m_held || !std::equal(viewport, viewport + 4, m_viewport) || !(source == m_source))
        return false;
    Format format;
    if (!formatOfBound(format) || !(format == m_format))
        return false;
    GLint draw = 0, read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    blit(static_cast<GLint>(m_buffer.framebuffer), draw, viewport);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw));
    // Equations in eye space, set as such.
    glPushMatrix();
    glLoadIdentity();
    for (const auto& plane : m_clipPlanes) {
        glClipPlane(plane.plane, plane.equation.data());
        glEnable(plane.plane);
    }
    glPopMatrix();
    if (!m_multisample)
        glDisable(GL_MULTISAMPLE);
    return true;
}

void ModelImage::release() {
    GLint draw = 0, read = 0;
    if (m_buffer.framebuffer) {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
        m_buffer.destroy();
        if (draw != 0 || read != 0) {
            glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
            glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw));
        }
    }
    m_width = m_height = 0;
    m_held = false;
}

} // namespace qrngl
