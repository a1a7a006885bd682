#include "qrngl/picking/OGLPickCanvas.h"

namespace qrngl {

OGLPickCanvas::OGLPickCanvas(std::shared_ptr<IRenderContext> context,
                             std::shared_ptr<qrn::IDocument> document)
    : CanvasBase(std::move(context), std::move(document)) {}

OGLPickCanvas::~OGLPickCanvas() = default;

void OGLPickCanvas::Set(int x, int y, int size, unsigned short type) {
    m_x = x;
    m_y = y;
    m_size = size;
    m_type = type;
    m_buffer.assign(BUFFER_SIZE, 0u);
    m_hits.clear();
}

const std::vector<PickResult>& OGLPickCanvas::Get() const {
    return m_hits;
}

void OGLPickCanvas::SetPickBox(int, int, int size, unsigned short type) {
    m_size = size;
    m_type = type;
    m_buffer.assign(BUFFER_SIZE, 0u);
    m_hits.clear();
}

void OGLPickCanvas::GetPickBox(int, int, std::vector<PickResult>& hits) {
    hits = m_hits;
}

void OGLPickCanvas::processHits(int count) const {
    if (count < 1)
        return;
    // Depths are unsigned integers over the buffer's range; 2^-31 maps them onto 0 to 2.
    const float scale = 1.0f / 2147483648.0f;
    std::size_t at = 0;
    for (int record = 0; record < count; ++record) {
        if (at + 3 > m_buffer.size())
            break;
        const unsigned int n = m_buffer[at];
        const float minDepth = static_cast<float>(m_buffer[at + 1]) * scale;
        const float maxDepth = static_cast<float>(m_buffer[at + 2]) * scale;
        at += 3;
        if (at + n > m_buffer.size())
            break;
        if (n > 0)
            m_hits.emplace_back(
                minDepth, maxDepth,
                std::vector<unsigned int>(m_buffer.begin() + static_cast<long>(at),
                                          m_buffer.begin() + static_cast<long>(at + n)));
        at += n;
    }
}

} // namespace qrngl
