#include "qrngl/frame/FrameBufferObject.h"

namespace qrngl {

namespace {

GLuint renderbuffer(GLenum format, GLsizei width, GLsizei height, int samples) {
    GLuint id = 0;
    glGenRenderbuffers(1, &id);
    glBindRenderbuffer(GL_RENDERBUFFER, id);
    if (samples > 0)
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width, height);
    else
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
    return id;
}

} // namespace

bool FrameBufferObject::create(unsigned int width, unsigned int height, int samples, bool bind,
                               GLenum colourFormat, GLenum depthFormat) {
    if (!glGenFramebuffers || (samples > 0 && !glRenderbufferStorageMultisample))
        return false;
    if (samples > 0) {
        GLint maxSamples = 0;
        glGetIntegerv(GL_MAX_SAMPLES, &maxSamples);
        if (maxSamples < samples)
            return false;
    }
    const auto w = static_cast<GLsizei>(width);
    const auto h = static_cast<GLsizei>(height);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    color = renderbuffer(colourFormat, w, h, samples);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
    depthStencil = renderbuffer(depthFormat, w, h, samples);
    const bool stencil = depthFormat == GL_DEPTH24_STENCIL8 || depthFormat == GL_DEPTH32F_STENCIL8;
    glFramebufferRenderbuffer(GL_FRAMEBUFFER,
                              stencil ? GL_DEPTH_STENCIL_ATTACHMENT : GL_DEPTH_ATTACHMENT,
                              GL_RENDERBUFFER, depthStencil);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    if (!complete || !bind)
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    if (!complete)
        destroy();
    return complete;
}

void FrameBufferObject::destroy() {
    if (framebuffer) {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
    }
    if (color)
        glDeleteRenderbuffers(1, &color);
    if (depthStencil)
        glDeleteRenderbuffers(1, &depthStencil);
    *this = FrameBufferObject();
}

} // namespace qrngl
