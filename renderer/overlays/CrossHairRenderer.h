#pragma once

#include "qrngl/IOverlay.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/PLMaterial.h"

#include <memory>

namespace qrngl {

// Draws a cross-hair figure over the finished frame, in pixels of the current viewport with
// the origin at its lower-left corner. The figure is made elsewhere (CrossHairUtils) and
// handed over; this overlay supplies the projection, blending and a black line material.
class QRNGL_EXPORT CrossHairRenderer : public IPostRenderer, public IPicker, public IOverlay {
public:
    enum : short { ORDER = 580 };

    CrossHairRenderer();
    CrossHairRenderer(const CrossHairRenderer& other);
    CrossHairRenderer& operator=(const CrossHairRenderer& other);
    ~CrossHairRenderer() override;

    // Both replace the figure; an empty one hides the cross-hair.
    void set(std::shared_ptr<IRenderer> figure);
    void reset(std::shared_ptr<IRenderer> figure);

    void render() const override;
    short order() const override;

    // Not pickable.
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

    const std::shared_ptr<IRenderer>& figure() const { return m_figure; }
    const qrnsg::PLMaterial& material() const { return m_material; }

private:
    std::shared_ptr<IRenderer> m_figure;
    qrnsg::PLMaterial m_material;
};

} // namespace qrngl
