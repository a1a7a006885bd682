#pragma once

#include "qrn2d/SCScene2D.h"
#include "qrngl/IRenderer.h"

#include <memory>

namespace qrnglr2d {

// The view of a sheet: an orthographic projection that fits the whole sheet, with a small
// margin, into the viewport without distorting it.
class SheetViewRenderer : public qrngl::IRenderer {
public:
    SheetViewRenderer(std::shared_ptr<qrn2d::SCScene2D> scene, int sheetIndex);
    void render() const override;

private:
    std::shared_ptr<qrn2d::SCScene2D> m_scene;
    int m_sheetIndex;
};

} // namespace qrnglr2d
