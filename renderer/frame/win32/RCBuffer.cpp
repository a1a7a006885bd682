// The pixel-buffer context on WGL_ARB_pbuffer; every window-system call goes through WglApi.
#include "qrngl/frame/RCBuffer.h"

#include "qrngl/frame/win32/WglApi.h"

#include <vector>

namespace qrngl {

namespace {

HPBUFFERARB pbufferOf(void* handle) {
    return static_cast<HPBUFFERARB>(handle);
}

// Ends the temporary context the same way on every path out of create: SwapBuffers and a
// release (its deactivate), then a second release, its context deleted, its DC released and
// its window destroyed (its destroy).
void tearDown(RCTemp& temp) {
    temp.deactivate();
    temp.destroy();
}

} // namespace

int RCBuffer::choosePixelFormat(RCTemp temp, unsigned int maxFormats, int& format) {
    const WglApi& api = WglApi::get();
    std::vector<int> attributes = {WGL_DRAW_TO_PBUFFER_ARB, 1,
                                   WGL_SUPPORT_OPENGL_ARB,  1,
                                   WGL_ACCELERATION_ARB,    WGL_FULL_ACCELERATION_ARB,
                                   WGL_COLOR_BITS_ARB,      24,
                                   WGL_DEPTH_BITS_ARB,      16,
                                   WGL_STENCIL_BITS_ARB,    2,
                                   WGL_PIXEL_TYPE_ARB,      WGL_TYPE_RGBA_ARB};
    if (m_multisample && api.hasArbMultisample())
        attributes.insert(attributes.end(), {WGL_SAMPLE_BUFFERS_ARB, 1, WGL_SAMPLES_ARB, 4});
    attributes.insert(attributes.end(), {WGL_RED_BITS_ARB, 8, WGL_GREEN_BITS_ARB, 8,
                                         WGL_BLUE_BITS_ARB, 8, WGL_DOUBLE_BUFFER_ARB, 0, 0});
    UINT count = 0;
    return api.choosePixelFormatARB(temp.currentDC(), attributes.data(), nullptr, maxFormats,
                                    &format, &count);
}

bool RCBuffer::create() {
    const WglApi& api = WglApi::get();
    RCTemp temp(m_width, m_height, nullptr);
    if (!temp.create()) {
        tearDown(temp);
        return false;
    }
    temp.activate();
    if (!m_parent && api.glewInit() != GLEW_OK) {
        tearDown(temp);
        return false;
    }
    int format = 0;
    if (!api.hasArbPbuffer() || !api.hasArbPixelFormat() || !choosePixelFormat(temp, 1, format)) {
        tearDown(temp);
        return false;
    }
    const int noAttributes[] = {0};
    HPBUFFERARB pbuffer = api.createPbufferARB(temp.currentDC(), format, static_cast<int>(m_width),
                                               static_cast<int>(m_height), noAttributes);
    m_pbuffer = pbuffer;
    m_dc = api.getPbufferDCARB(pbuffer);
    m_rc = api.createContext(m_dc);
    if (m_parent)
        api.shareLists(m_parent->currentGLRC(), m_rc);
    tearDown(temp);
    // A choice that names no format (count 0) leaves no buffer and no context; making nothing
    // current would succeed, so it is caught here.
    if (pbuffer && m_rc && api.makeCurrent(m_dc, m_rc)) {
        activate();
        return true;
    }
    if (m_rc)
        api.deleteContext(m_rc);
    m_rc = nullptr;
    return false;
}

void RCBuffer::destroy() {
    // Once destroyed, nothing more: releasing a null DC would release whatever context is
    // current by then.
    if (!m_pbuffer && !m_dc && !m_rc)
        return;
    const WglApi& api = WglApi::get();
    deactivate();
    api.makeCurrent(m_dc, nullptr);
    if (m_rc)
        api.deleteContext(m_rc);
    m_rc = nullptr;
    if (m_dc)
        api.releasePbufferDCARB(pbufferOf(m_pbuffer), m_dc);
    m_dc = nullptr;
    if (m_pbuffer)
        api.destroyPbufferARB(pbufferOf(m_pbuffer));
    m_pbuffer = nullptr;
}

void RCBuffer::activate() {
    const WglApi& api = WglApi::get();
    m_dc = api.getPbufferDCARB(pbufferOf(m_pbuffer));
    api.makeCurrent(m_dc, m_rc);
}

void RCBuffer::deactivate() {
    glFlush();
}

} // namespace qrngl
