#pragma once

#include "qrngl/IPickCanvas.h"
#include "qrngl/frame/CanvasBase.h"
#include "qrngl/qrngl_export.h"

#include <vector>

namespace qrngl {

// The selection-mode pick canvas's state and its reading of the selection buffer. A pass
// returns every named entity drawn inside the pick region, hidden or not, with its depths.
class QRNGL_EXPORT OGLPickCanvas : public CanvasBase<IPickCanvas> {
public:
    // The selection buffer starts at BUFFER_SIZE entries; a pass that overflows it draws
    // again into one four times larger, up to MAX_BUFFER_SIZE, so that a box over many
    // entities returns them all.
    enum : int { BUFFER_SIZE = 512, MAX_BUFFER_SIZE = 1 << 24 };

    OGLPickCanvas(std::shared_ptr<IRenderContext> context,
                  std::shared_ptr<qrn::IDocument> document);
    ~OGLPickCanvas() override;

    void Set(int x, int y, int size, unsigned short type) override;
    const std::vector<PickResult>& Get() const override;
    void SetPickBox(int width, int height, int size, unsigned short type) override;
    void GetPickBox(int width, int height, std::vector<PickResult>& hits) override;

    // Turns the hit records of the last pass into hits; records without names are skipped.
    void processHits(int count) const;

protected:
    mutable std::vector<unsigned int> m_buffer = std::vector<unsigned int>(BUFFER_SIZE, 0u);
    int m_x = 0;
    int m_y = 0;
    int m_size = 0;
    unsigned short m_type = 0;
    mutable std::vector<PickResult> m_hits;
};

} // namespace qrngl
