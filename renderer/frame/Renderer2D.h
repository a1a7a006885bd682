#pragma once

#include "qrn2d/SCScene2D.h"
#include "qrngl/Handles.h"
#include "qrngl/IRenderer.h"
#include "qrngl/qrngl_export.h"

#include <memory>

namespace qrngl {

// Draws one sheet of a 2D drawing from a display list compiled on first use.
class QRNGL_EXPORT Renderer2D : public IRenderer {
public:
    enum : unsigned int { NO_LIST = 0xFFFFFFFFu };

    Renderer2D(HDC dc, const std::shared_ptr<qrn2d::SCScene2D>& scene, const int& sheetIndex);
    Renderer2D(const Renderer2D& other);
    Renderer2D& operator=(const Renderer2D& other);
    ~Renderer2D() override;

    void render() const override;
    unsigned int displayList() const { return m_list; }

private:
    void compileList(int sheetIndex) const;
    void compileSheetList(int sheetIndex) const;

    int m_sheetIndex;
    mutable unsigned int m_list;
    std::shared_ptr<qrn2d::SCScene2D> m_scene;
    HDC m_dc;
};

} // namespace qrngl
