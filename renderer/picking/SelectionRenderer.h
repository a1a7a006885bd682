#pragma once

#include "qrn/IDocument.h"
#include "qrngl/IOverlay.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/picking/SelectionSet.h"
#include "qrngl/qrngl_export.h"

#include <memory>
#include <vector>

namespace qrngl {

// Draws the selected entities highlighted over the frame (faces tinted in the selection
// colour, edges thicker, vertices as larger dots) and the hovered one in the pre-highlight
// colour. Hidden parts show no highlight.
class QRNGL_EXPORT SelectionRenderer : public IPostRenderer, public IOverlay {
public:
    enum : short { ORDER = 10 };

    SelectionRenderer(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<SelectionSet> set);
    void render() const override;
    short order() const override { return ORDER; }

private:
    struct Components;
    void draw(const Components& c, unsigned int name, const float colour[3]) const;
    void drawPmi(const Components& c, int primitiveId, const float colour[3]) const;
    bool tintMarked(const Components& c, const std::vector<int>& meshIds) const;
    void screenBox(const Components& c, const std::vector<int>& meshIds, const int viewport[4],
                   int rect[4]) const;

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<SelectionSet> m_set;
};

} // namespace qrngl
