#include "qrngl/frame/Renderer2D.h"

#include "qrngl/GL.h"

#include <algorithm>
#include <cwctype>

namespace qrngl {

namespace {

bool isSheetBorder(const std::wstring& name) {
    static const std::wstring border = L"sheetborder";
    if (name.size() != border.size())
        return false;
    return std::equal(name.begin(), name.end(), border.begin(), [](wchar_t a, wchar_t b) {
        return std::towlower(static_cast<std::wint_t>(a)) == static_cast<std::wint_t>(b);
    });
}

} // namespace

Renderer2D::Renderer2D(HDC dc, const std::shared_ptr<qrn2d::SCScene2D>& scene,
                       const int& sheetIndex)
    : m_sheetIndex(sheetIndex), m_list(NO_LIST), m_scene(scene), m_dc(dc) {}

Renderer2D::Renderer2D(const Renderer2D& other) = default;

Renderer2D& Renderer2D::operator=(const Renderer2D& other) = default;

Renderer2D::~Renderer2D() = default;

void Renderer2D::render() const {
    if (m_list == NO_LIST)
        compileList(m_sheetIndex);
    glCallList(m_list);
}

void Renderer2D::compileList(int sheetIndex) const {
    m_list = glGenLists(1);
    glNewList(m_list, GL_COMPILE);
    // GL_LINE names no capability: this call only raises an error, and is kept as it stands.
    glEnable(0x1B01);
    glEnableClientState(GL_VERTEX_ARRAY);
    compileSheetList(sheetIndex);

    const qrn2d::SCScene2D& scene = *m_scene;
    auto views = scene.sheetViews.find(sheetIndex);
    if (views != scene.sheetViews.end()) {
        for (int viewId : views->second) {
            if (scene.entities.empty())
                break;
            if (isSheetBorder(scene.views.at(static_cast<std::size_t>(viewId)).name))
                continue;
            auto entities = scene.viewEntities.find(viewId);
            if (entities == scene.viewEntities.end())
                continue;
            for (int entityId : entities->second) {
                const qrn2d::Entity& e = scene.entities.at(static_cast<std::size_t>(entityId));
                const auto& color =
                    scene.colors.at(static_cast<std::size_t>(scene.entityColors.at(entityId)));
                glColor3fv(color.data());
                glLineWidth(static_cast<float>(e.lineWidth));
                const GLsizei count = static_cast<GLsizei>(e.points.size());
                glVertexPointer(2, GL_FLOAT, 12, e.points.empty() ? nullptr : e.points[0].data());
                switch (e.kind) {
                case 4:
                    glDrawArrays(static_cast<GLenum>(e.kind + 1), 0, count); // GL_TRIANGLE_STRIP
                    break;
                case 0:
                case 1:
                case 2:
                case 3:
                case 8:
                case 9:
                    if (!e.stipple) {
                        glDrawArrays(GL_LINE_STRIP, 0, count);
                    } else {
                        glPushAttrib(GL_CURRENT_BIT | GL_LIGHTING_BIT | GL_ENABLE_BIT);
                        glEnable(GL_LINE_STIPPLE);
                        glLineStipple(2, e.stipplePattern);
                        glDrawArrays(GL_LINE_STRIP, 0, count);
                        glDisable(GL_LINE_STIPPLE);
                        glPopAttrib();
                    }
                    break;
                default:
                    break; // kinds drawn elsewhere (5, 6, 7, 10 and above)
                }
            }
        }
    }
    glDisableClientState(GL_VERTEX_ARRAY);
    glDisable(GL_POINT_SMOOTH);
    glEndList();
}

void Renderer2D::compileSheetList(int sheetIndex) const {
    qrn2d::SCScene2D& scene = *m_scene;
    if (sheetIndex < 0 || static_cast<std::size_t>(sheetIndex) >= scene.sheets.size())
        return;
    const qrn2d::Sheet& sheet = scene.sheets[static_cast<std::size_t>(sheetIndex)];
    qrnmath::Vec3 lo = sheet.lowerLeft;
    qrnmath::Vec3 hi = sheet.upperRight;
    const float m = (hi[0] - lo[0]) / 100.0f;
    lo[0] -= m;
    lo[1] -= m;
    hi[0] += m;
    hi[1] += m;
    scene.maxDiagonal = std::max(scene.maxDiagonal, lo.distance(hi));
    const qrnmath::Vec3 loop[5] = {lo, qrnmath::Vec3(lo[0], hi[1], lo[2]), hi,
                                   qrnmath::Vec3(hi[0], lo[1], hi[2]), lo};
    glColor3fv(sheet.color.data());
    glLineWidth(1.0f);
    for (int side = 0; side < 4; ++side) {
        glVertexPointer(2, GL_FLOAT, 12, loop[side].data());
        glDrawArrays(GL_LINE_STRIP, 0, 2);
    }
}

} // namespace qrngl
