#pragma once

#include "qrn/IDocument.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPreRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/BBox.h"
#include "qrnsg/IPairFunctor.h"

#include <memory>
#include <vector>

namespace qrngl {

// Sets the clip plane before the scene is drawn, so that the scene is cut, and fills the cut
// faces of closed solids (caps) by counting faces in the stencil buffer: in one material for
// all, or in each part's own colour, optionally hatched. Picks see the same cut, and the caps
// of the id pass carry their part's name.
class QRNGL_EXPORT PreClipRenderer : public IPreRenderer, public IPicker {
public:
    enum : short { ORDER = 600 };

    explicit PreClipRenderer(std::shared_ptr<qrn::IDocument> document);
    ~PreClipRenderer() override;

    void setPlane(std::shared_ptr<IRenderer> capQuad,
                  std::shared_ptr<qrnsg::IPairFunctor> visibility);
    void render() const override;
    short order() const override { return ORDER; }
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

    // The nodes the plane in force cuts through meshes that bound no solid: they get no cap.
    std::vector<int> openCutNodes() const;

private:
    // Draws the caps of the plane in force: for the eye, or under part names in an id pass.
    void drawCaps(const NamesInitializer* names) const;
    const qrnsg::BBox& meshBox(const void* meshes, int drawable) const;

    // Weak: the document holds this renderer through its renderer component.
    std::weak_ptr<qrn::IDocument> m_document;
    std::shared_ptr<IRenderer> m_capQuad;
    std::shared_ptr<qrnsg::IPairFunctor> m_visibility;
    // Per drawable: its box, computed when first needed.
    mutable std::vector<qrnsg::BBox> m_boxes;
    mutable const void* m_boxesOf = nullptr;
};

} // namespace qrngl
