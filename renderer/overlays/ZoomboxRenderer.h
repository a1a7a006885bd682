#pragma once

#include "qrngl/IOverlay.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/MMaterial.h"
#include "qrnsg/PLMaterial.h"

#include <memory>

namespace qrngl {

// Draws the rubber-band rectangle of a box zoom over the finished frame, in pixels of the
// current viewport with the origin at its lower-left corner: a translucent dark fill and an
// outline. The geometry is made elsewhere (ZoomboxUtils) and handed over; this overlay
// supplies the projection, blending and materials. Its order is IPostRenderer's default.
class QRNGL_EXPORT ZoomboxRenderer : public IPostRenderer, public IPicker, public IOverlay {
public:
    ZoomboxRenderer();
    ZoomboxRenderer(const ZoomboxRenderer& other);
    ZoomboxRenderer& operator=(const ZoomboxRenderer& other);
    ~ZoomboxRenderer() override;

    // The box is drawn only while both are set.
    void set(std::shared_ptr<IRenderer> fill, std::shared_ptr<IRenderer> outline);
    void resetBox();

    void render() const override;

    // Not pickable.
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

    const std::shared_ptr<IRenderer>& fill() const { return m_fill; }
    const std::shared_ptr<IRenderer>& outline() const { return m_outline; }
    const qrnsg::MMaterial& fillMaterial() const { return m_fillMaterial; }
    const qrnsg::PLMaterial& outlineMaterial() const { return m_outlineMaterial; }

private:
    std::shared_ptr<IRenderer> m_fill;
    std::shared_ptr<IRenderer> m_outline;
    qrnsg::MMaterial m_fillMaterial;
    qrnsg::PLMaterial m_outlineMaterial;
};

} // namespace qrngl
