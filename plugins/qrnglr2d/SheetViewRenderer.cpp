#include "qrnglr2d/SheetViewRenderer.h"

#include "qrngl/GL.h"

#include <algorithm>

namespace qrnglr2d {

SheetViewRenderer::SheetViewRenderer(std::shared_ptr<qrn2d::SCScene2D> scene, int sheetIndex)
    : m_scene(std::move(scene)), m_sheetIndex(sheetIndex) {}

void SheetViewRenderer::render() const {
    if (!m_scene || m_sheetIndex < 0 ||
        static_cast<std::size_t>(m_sheetIndex) >= m_scene->sheets.size())
        return;
    const qrn2d::Sheet& sheet = m_scene->sheets[static_cast<std::size_t>(m_sheetIndex)];
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    if (viewport[2] <= 0 || viewport[3] <= 0)
        return;
    const double cx = 0.5 * (sheet.lowerLeft[0] + sheet.upperRight[0]);
    const double cy = 0.5 * (sheet.lowerLeft[1] + sheet.upperRight[1]);
    // 2 % of margin around the sheet; the sheet's longer side against the window decides.
    double halfWidth = std::max(1e-6, 0.51 * std::abs(sheet.upperRight[0] - sheet.lowerLeft[0]));
    double halfHeight = std::max(1e-6, 0.51 * std::abs(sheet.upperRight[1] - sheet.lowerLeft[1]));
    const double window = static_cast<double>(viewport[2]) / viewport[3];
    if (halfWidth / halfHeight > window)
        halfHeight = halfWidth / window;
    else
        halfWidth = halfHeight * window;
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(cx - halfWidth, cx + halfWidth, cy - halfHeight, cy + halfHeight, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

} // namespace qrnglr2d
