#pragma once

#include "qrngl/picking/UCPickCanvas.h"
#include "qrngl/qrngl_export.h"

#include <array>

namespace qrngl {

// A colour-id canvas that reads the whole viewport through a pixel-pack buffer and keeps the
// names: later picks in an unchanged view (hovering) read them without drawing again. The first
// point pick in a view draws only its square; a second one there reads the whole view. A new
// view, size or Invalidate draws afresh.
class QRNGL_EXPORT PBOPickCanvas : public UCPickCanvas {
public:
    // What the kept names depend on: projection, model-view, viewport size, the vertex
    // mask, and the clip plane with its cap and profile state.
    using ViewKey = std::array<float, 42>;

    PBOPickCanvas(std::shared_ptr<IRenderContext> context,
                  std::shared_ptr<qrn::IDocument> document);
    ~PBOPickCanvas() override;

    bool OnCreate() override;
    // Frees the frame buffer and the pixel buffer; the context they were made in must be
    // current.
    void OnDestroy() override;
    void Invalidate() override;
    void OnDraw() const override;
    void OnSize(unsigned int x, unsigned int y, unsigned int width, unsigned int height) override;
    void OnDrawPickBox(int x, int y, int width, int height) override;
    // Point queries come from the kept names.
    bool isAdvancePointFilterSupported() const override;
    void GetPoints(int x, int y, std::vector<PickResult>& hits) const override;

private:
    // Draws and reads the viewport when the kept names are stale; false without names.
    bool refresh() const;
    // The camera and mask the names would be drawn with; false without a scene to pick.
    bool currentView(ViewKey& view) const;
    void copy(int x, int y, int width, int height, std::vector<std::uint32_t>& out) const;

    mutable unsigned int m_pbo = 0;
    mutable std::vector<std::uint32_t> m_names; // the viewport, bottom row first
    mutable int m_width = 0;
    mutable int m_height = 0;
    mutable ViewKey m_view{}; // the camera, cut and mask the names were drawn with
    mutable ViewKey m_squareView{};
    mutable bool m_squareDrawn = false; // a first pick drew its square in m_squareView
};

} // namespace qrngl
