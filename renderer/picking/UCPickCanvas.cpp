#include "qrngl/picking/UCPickCanvas.h"

#include "qrngl/Camera.h"
#include "qrngl/GL.h"
#include "qrngl/NamesInitializer.h"
#include "qrngl/picking/PickPass.h"
#include "qrnsg/EntityNames.h"

#include <algorithm>
#include <unordered_map>

namespace qrngl {

using qrnsg::EntityNames;

UCPickCanvas::UCPickCanvas(std::shared_ptr<IRenderContext> context,
                           std::shared_ptr<qrn::IDocument> document)
    : CanvasBase(std::move(context), std::move(document)) {}

UCPickCanvas::~UCPickCanvas() = default;

// The names read back stay until the next Set; only the next pass draws afresh.
void UCPickCanvas::Invalidate() {
    CanvasBase::Invalidate();
    m_stale = true;
}

void UCPickCanvas::Set(int x, int y, int size, unsigned short type) {
    m_x = x;
    m_y = y;
    m_type = type;
    if (size != m_size || m_box) {
        m_size = std::max(size, 0);
        m_box = false;
        m_square.assign(static_cast<std::size_t>(4 * m_size * m_size), 0u);
    }
    std::fill(m_square.begin(), m_square.end(), 0u);
    m_hits.clear();
}

bool UCPickCanvas::accepts(std::uint32_t name, bool faces) const {
    switch (EntityNames::kindOf(name)) {
    case EntityNames::EDGE_LIKE:
        return (m_type & 8) && (m_type & 16);
    case EntityNames::EDGE:
        return (m_type & 2) != 0;
    case EntityNames::POINT:
        return (m_type & 4) != 0;
    case EntityNames::FACE:
        return faces && (m_type & 1);
    case EntityNames::PART: // a cut part's cap
        return faces && (m_type & 1);
    case EntityNames::TOOL:
        return faces && (m_type & 32);
    default:
        return false;
    }
}

bool UCPickCanvas::checkIterator(int step, int index, int count) const {
    if (index < 0 || index >= count)
        return false;
    return !m_box || step < m_boxWidth * m_boxHeight;
}

// First walk: outwards from the centre pixel along the buffer, one step forwards and one
// backwards in turn, for edges and points only. Second walk, when that found nothing: rings
// of growing distance around the centre, faces too, so that the nearest entity wins.
void UCPickCanvas::walk(const std::vector<std::uint32_t>& square, int size,
                        std::vector<PickResult>& hits) const {
    const int side = 2 * size;
    const int count = static_cast<int>(square.size());
    if (size <= 0 || count < side * side)
        return;
    const int centre = size * side + size;
    auto take = [&](int index) {
        hits.emplace_back(0.0f, 0.0f,
                          std::vector<unsigned int>{square[static_cast<std::size_t>(index)]});
    };
    for (int step = 0; step < size * size; ++step) {
        const int forward = centre + step;
        const int backward = centre - step;
        const bool forwardOk = checkIterator(step, forward, count);
        const bool backwardOk = checkIterator(step, backward, count);
        if (forwardOk && accepts(square[static_cast<std::size_t>(forward)], false))
            return take(forward);
        if (backwardOk && accepts(square[static_cast<std::size_t>(backward)], false))
            return take(backward);
        if (!forwardOk && !backwardOk)
            break;
    }
    for (int ring = 0; ring < size; ++ring)
        for (int row = size - ring; row <= size + ring; ++row)
            for (int col = size - ring; col <= size + ring; ++col) {
                if (row < 0 || col < 0 || row >= side || col >= side ||
                    (std::abs(row - size) != ring && std::abs(col - size) != ring))
                    continue;
                const int index = row * side + col;
                if (accepts(square[static_cast<std::size_t>(index)], true))
                    return take(index);
            }
}

const std::vector<PickResult>& UCPickCanvas::Get() const {
    // No square, no hits: not what the last box pick left.
    if (m_square.empty()) {
        m_hits.clear();
        return m_hits;
    }
    m_hits.clear();
    walk(m_square, m_size, m_hits);
    return m_hits;
}

void UCPickCanvas::GetPoints(int, int, std::vector<PickResult>& hits) const {
    hits = Get();
}

void UCPickCanvas::SetPickBox(int width, int height, int size, unsigned short type) {
    m_type = type;
    m_size = size;
    m_box = true;
    m_boxWidth = std::max(width, 0);
    m_boxHeight = std::max(height, 0);
    m_boxNames.assign(static_cast<std::size_t>(m_boxWidth) * static_cast<std::size_t>(m_boxHeight),
                      0u);
    m_hits.clear();
}

void UCPickCanvas::GetPickBox(int width, int height, std::vector<PickResult>& hits) {
    hits.clear();
    if (width != m_boxWidth || height != m_boxHeight || m_boxNames.empty())
        return;
    // Each entity once, the one nearest to the centre (by rings around it) first.
    std::unordered_map<std::uint32_t, std::pair<int, std::size_t>> nearest; // ring, first pixel
    const int cx = width / 2, cy = height / 2;
    for (int row = 0; row < height; ++row)
        for (int col = 0; col < width; ++col) {
            const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(col);
            const std::uint32_t name = m_boxNames[at];
            if (name == 0)
                continue;
            const int ring = std::max(std::abs(row - cy), std::abs(col - cx));
            auto found = nearest.find(name);
            if (found == nearest.end()) {
                if (accepts(name, true))
                    nearest.emplace(name, std::make_pair(ring, at));
            } else if (ring < found->second.first) {
                found->second = {ring, at};
            }
        }
    std::vector<std::pair<std::pair<int, std::size_t>, std::uint32_t>> order;
    order.reserve(nearest.size());
    for (const auto& n : nearest)
        order.push_back({n.second, n.first});
    std::sort(order.begin(), order.end());
    for (const auto& o : order)
        hits.emplace_back(0.0f, 0.0f, std::vector<unsigned int>{o.second});
    m_hits = hits;
}

unsigned int UCPickCanvas::viewportHeight() const {
    PickPass pass(m_document);
    return pass.ready() ? pass.camera()->viewportHeight() : 0u;
}

bool UCPickCanvas::bindFrameBuffer(int width, int height) const {
    // Without frame buffer objects (OpenGL before 3.0 without the extension) no id pass.
    if (!glGenFramebuffers || !glBindFramebuffer || !glCheckFramebufferStatus)
        return false;
    if (m_fbo && (width != m_fboWidth || height != m_fboHeight))
        releaseFrameBuffer();
    if (!m_fbo) {
        glGenFramebuffers(1, &m_fbo);
        glGenRenderbuffers(1, &m_colour);
        glGenRenderbuffers(1, &m_depth);
        glBindRenderbuffer(GL_RENDERBUFFER, m_colour);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
        glBindRenderbuffer(GL_RENDERBUFFER, m_depth);
        // With stencil: a clip plane's caps are found by counting faces in it.
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width, height);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        m_fboWidth = width;
        m_fboHeight = height;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, m_fbo);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_colour);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                              m_depth);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void UCPickCanvas::releaseFrameBuffer() const {
    if (m_fbo && glDeleteFramebuffers) {
        glDeleteFramebuffers(1, &m_fbo);
        glDeleteRenderbuffers(1, &m_colour);
        glDeleteRenderbuffers(1, &m_depth);
    }
    m_fbo = m_colour = m_depth = 0;
    m_fboWidth = m_fboHeight = 0;
}

bool UCPickCanvas::idPass(const int* scissor, const std::function<void()>& read) const {
    PickPass pass(m_document);
    if (!pass.ready())
        return false;
    const int width = static_cast<int>(pass.camera()->viewportWidth());
    const int height = static_cast<int>(pass.camera()->viewportHeight());
    if (width <= 0 || height <= 0)
        return false;
    if (m_context)
        m_context->activate();
    // The context may draw into a frame buffer of its own (the off-screen ones do).
    GLint drawBinding = 0, readBinding = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawBinding);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readBinding);
    bool drawn = false;
    if (bindFrameBuffer(width, height)) {
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glViewport(0, 0, width, height);
        for (GLenum cap : {GL_MULTISAMPLE, GL_BLEND, GL_LIGHTING, GL_DITHER, GL_FOG, GL_TEXTURE_2D,
                           GL_LINE_SMOOTH, GL_POINT_SMOOTH, GL_POLYGON_SMOOTH, GL_ALPHA_TEST,
                           GL_CULL_FACE, GL_COLOR_MATERIAL, GL_STENCIL_TEST})
            glDisable(cap);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glDepthMask(GL_TRUE);
        if (scissor) {
            glEnable(GL_SCISSOR_TEST);
            glScissor(scissor[0], scissor[1], scissor[2], scissor[3]);
        } else {
            glDisable(GL_SCISSOR_TEST);
        }
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        // Faces behind the lines and points drawn on them.
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.0f, 1.0f);
        glShadeModel(GL_FLAT);
        pass.loadMatrices(0, 0, 0, 0);
        pass.draw(NamesInitializer::COLOUR, m_type);
        read();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glPopAttrib();
        drawn = true;
    }
    // A frame buffer that is not complete is not read.
    if (glBindFramebuffer) {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(drawBinding));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(readBinding));
    }
    if (m_context)
        m_context->deactivate();
    return drawn;
}

void UCPickCanvas::readNames(int x, int y, int width, int height,
                             std::vector<std::uint32_t>& out) const {
    out.assign(static_cast<std::size_t>(std::max(width, 0)) *
                   static_cast<std::size_t>(std::max(height, 0)),
               0u);
    const int x0 = std::max(x, 0), y0 = std::max(y, 0);
    const int x1 = std::min(x + width, m_fboWidth), y1 = std::min(y + height, m_fboHeight);
    if (x1 <= x0 || y1 <= y0)
        return;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(x1 - x0) *
                                      static_cast<std::size_t>(y1 - y0) * 4);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
    glReadPixels(x0, y0, x1 - x0, y1 - y0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glPopClientAttrib();
    for (int row = y0; row < y1; ++row)
        for (int col = x0; col < x1; ++col)
            out[static_cast<std::size_t>(row - y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(col - x)] =
                NamesInitializer::fromColour(&pixels[(static_cast<std::size_t>(row - y0) *
                                                          static_cast<std::size_t>(x1 - x0) +
                                                      static_cast<std::size_t>(col - x0)) *
                                                     4]);
}

} // namespace qrngl
