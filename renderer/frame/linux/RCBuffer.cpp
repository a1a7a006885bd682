// The pixel-buffer context on GLX 1.3 pbuffers, step by step as on Windows (see Glx.h for the
// counterpart of each call). GLX shares lists when a context is made, so the parent's lists
// are named at creation rather than afterwards.
//
// Multisampling: Mesa's GLX offers multisampled pbuffer configurations but draws them with
// one sample, so a multisampled buffer is a single-sampled pbuffer with a 4-sample frame
// buffer object in front of it. Frames are drawn into the frame buffer object and resolved into
// the pbuffer by deactivate(); reads see the pbuffer, that is the last finished frame.
// m_pbuffer holds the GLXPbuffer id, as the header says.
#include "qrngl/frame/RCBuffer.h"

#include "qrngl/frame/FrameBufferObject.h"
#include "qrngl/frame/linux/Glx.h"

#include <cstdint>
#include <map>
#include <vector>

namespace qrngl {

namespace {

// The multisampled frame buffer object in front of a pbuffer.
using Surface = FrameBufferObject;

// By pbuffer: copies of a context share its pbuffer, and the one destroyed first releases
// what both drew with. Only the user-interface thread uses contexts.
std::map<GLXPbuffer, Surface>& surfaces() {
    static std::map<GLXPbuffer, Surface> table;
    return table;
}

GLXPbuffer pbufferOf(void* handle) {
    return static_cast<GLXPbuffer>(reinterpret_cast<std::uintptr_t>(handle));
}

void* pbufferHandle(GLXPbuffer pbuffer) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(pbuffer));
}

// The multisampled frame buffer of a pbuffer; null when it has none.
const Surface* surfaceOf(void* handle) {
    auto it = surfaces().find(pbufferOf(handle));
    return it == surfaces().end() ? nullptr : &it->second;
}

GLXDrawable drawableOf(HDC dc) {
    return static_cast<GLXDrawable>(reinterpret_cast<std::uintptr_t>(dc));
}

// Ends the temporary context the same way on every path: present, release twice, delete the
// context, let go of the window.
void tearDown(RCTemp& temp) {
    const GlxApi& glx = GlxApi::get();
    Display* display = Glx::defaultDisplay();
    const Window window = Glx::window(temp.currentDC());
    glx.swapBuffers(display, window);
    glx.makeCurrent(display, window, nullptr);
    glx.makeCurrent(display, window, nullptr);
    temp.destroy();
}

} // namespace

int RCBuffer::choosePixelFormat(RCTemp temp, unsigned int maxFormats, int& format) {
    const GlxApi& glx = GlxApi::get();
    std::vector<int> attributes = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT,
                                   GLX_RENDER_TYPE,   GLX_RGBA_BIT,
                                   GLX_CONFIG_CAVEAT, GLX_NONE,
                                   GLX_BUFFER_SIZE,   24,
                                   GLX_DEPTH_SIZE,    16,
                                   GLX_STENCIL_SIZE,  2};
    // Single-sampled even when multisampling is asked for: the samples are the frame buffer
    // object's (see the top of this file).
    attributes.insert(attributes.end(), {GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8,
                                         GLX_DOUBLEBUFFER, False, None});
    // GLX chooses on the display rather than on the temporary drawable, and names the best
    // match first: maxFormats only bounds what the answer may hold.
    (void)temp;
    unsigned int count = 0;
    const bool chosen =
        glx.chooseFBConfig(Glx::defaultDisplay(), attributes.data(), &format, &count);
    return chosen && count > 0 && maxFormats > 0 ? 1 : 0;
}

bool RCBuffer::create() {
    const GlxApi& glx = GlxApi::get();
    Display* display = Glx::defaultDisplay();
    RCTemp temp(m_width, m_height, nullptr);
    if (!temp.create()) {
        tearDown(temp);
        return false;
    }
    temp.activate();
    if (!m_parent && glx.glewInit() != 0) {
        tearDown(temp);
        return false;
    }
    if (!glx.hasPbuffer() || !glx.hasFBConfig()) {
        tearDown(temp);
        return false;
    }
    int format = 0;
    if (!choosePixelFormat(temp, 1, format)) {
        tearDown(temp);
        return false;
    }
    const GLXPbuffer pbuffer = glx.createPbuffer(display, format, m_width, m_height);
    m_pbuffer = pbufferHandle(pbuffer);
    m_dc = reinterpret_cast<HDC>(pbufferHandle(pbuffer));
    bool shared = false;
    m_rc = Glx::contextHandle(glx.createNewContext(
        display, format, m_parent ? Glx::context(m_parent->currentGLRC()) : nullptr, shared));
    tearDown(temp);
    if (pbuffer && m_rc && glx.makeContextCurrent(display, pbuffer, Glx::context(m_rc))) {
        Surface surface;
        // Blitted into the pbuffer at each frame's end.
        if (m_multisample && glx.hasMultisample() && glBlitFramebuffer &&
            surface.create(m_width, m_height, 4, false))
            surfaces()[pbuffer] = surface;
        activate();
        return true;
    }
    if (m_rc)
        glx.deleteContext(display, Glx::context(m_rc));
    m_rc = nullptr;
    return false;
}

void RCBuffer::destroy() {
    const GlxApi& glx = GlxApi::get();
    Display* display = Glx::defaultDisplay();
    deactivate();
    // The frame buffer's storage goes with this context, made current for it: shared with a
    // parent's lists, it would outlive the context otherwise.
    auto it = surfaces().find(pbufferOf(m_pbuffer));
    if (it != surfaces().end()) {
        if (m_rc && glx.makeContextCurrent(display, pbufferOf(m_pbuffer), Glx::context(m_rc)))
            it->second.destroy();
        surfaces().erase(it);
    }
    glx.makeContextCurrent(display, drawableOf(m_dc), nullptr);
    if (m_rc)
        glx.deleteContext(display, Glx::context(m_rc));
    m_rc = nullptr;
    m_dc = nullptr; // the pbuffer is its own drawable: nothing to release
    if (m_pbuffer)
        glx.destroyPbuffer(display, pbufferOf(m_pbuffer));
    m_pbuffer = nullptr;
}

void RCBuffer::activate() {
    if (!m_pbuffer)
        return;
    // The drawable is fetched again, as a pbuffer's DC is on Windows.
    m_dc = reinterpret_cast<HDC>(m_pbuffer);
    const Surface* s = surfaceOf(m_pbuffer);
    if (GlxApi::get().makeContextCurrent(Glx::defaultDisplay(), drawableOf(m_dc),
                                         Glx::context(m_rc)) &&
        s) {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, s->framebuffer);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    }
}

void RCBuffer::deactivate() {
    const Surface* s = surfaceOf(m_pbuffer);
    if (s && m_rc && GlxApi::get().currentContext() == Glx::context(m_rc)) {
        // The frame's samples resolved into the pbuffer, whole whatever scissor the frame left
        // on; the context stays current as it is.
        const auto w = static_cast<GLint>(m_width);
        const auto h = static_cast<GLint>(m_height);
        const GLboolean scissor = glIsEnabled(GL_SCISSOR_TEST);
        glDisable(GL_SCISSOR_TEST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, s->framebuffer);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        glBlitFramebuffer(0, 0, w, h, 0, 0, w, h, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, s->framebuffer);
        if (scissor)
            glEnable(GL_SCISSOR_TEST);
    }
    glFlush();
}

} // namespace qrngl
