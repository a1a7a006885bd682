#include "qrngl/picking/RBOPickCanvas.h"

namespace qrngl {

RBOPickCanvas::RBOPickCanvas(std::shared_ptr<IRenderContext> context,
                             std::shared_ptr<qrn::IDocument> document)
    : UCPickCanvas(std::move(context), std::move(document)) {}

RBOPickCanvas::~RBOPickCanvas() = default;

// The frame buffer is made on the first pass, at the viewport's size.
bool RBOPickCanvas::OnCreate() {
    return true;
}

void RBOPickCanvas::OnDestroy() {
    releaseFrameBuffer();
}

void RBOPickCanvas::OnDraw() const {
    if (m_size <= 0)
        return;
    const int a = m_size;
    const int square[4] = {m_x - a, static_cast<int>(viewportHeight()) - m_y - a, 2 * a, 2 * a};
    idPass(square, [&] { readNames(square[0], square[1], square[2], square[3], m_square); });
}

void RBOPickCanvas::OnSize(unsigned int x, unsigned int y, unsigned int width,
                           unsigned int height) {
    UCPickCanvas::OnSize(x, y, width, height);
    m_stale = true;
}

void RBOPickCanvas::OnDrawPickBox(int x, int y, int width, int height) {
    if (width <= 0 || height <= 0)
        return;
    const int box[4] = {x, y, width, height};
    idPass(box, [&] { readNames(x, y, width, height, m_boxNames); });
}

} // namespace qrngl
