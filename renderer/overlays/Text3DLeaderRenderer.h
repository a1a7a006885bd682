#pragma once

#include "qrn/IDocument.h"
#include "qrngl/IPicker.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/qrngl_export.h"
#include "qrnsg/PLMaterial.h"
#include "qrnsg/Text3DLeader.h"

#include <memory>

namespace qrngl {

// Draws the leader line of one 3D text, black at 60 % opacity, after the scene. The line's
// renderer is asked of the factory anew for every frame and released after it.
class QRNGL_EXPORT Text3DLeaderRenderer : public IPostRenderer, public IPicker {
public:
    Text3DLeaderRenderer(std::shared_ptr<qrn::IDocument> document,
                         std::shared_ptr<IRendererFactory> factory);
    Text3DLeaderRenderer(const Text3DLeaderRenderer& other);
    Text3DLeaderRenderer& operator=(const Text3DLeaderRenderer& other);
    ~Text3DLeaderRenderer() override;

    // The leader to draw from the next frame on; nothing is drawn before one is set.
    void set(std::shared_ptr<qrnsg::Text3DLeader> leader);
    void render() const override;

    // A leader cannot be picked.
    void pick(std::shared_ptr<NamesInitializer> names,
              std::shared_ptr<qrnsg::IPairVisitor> visitor) override;
    void choose(const FilterResult& result) const override;

    const qrnsg::PLMaterial& material() const { return m_material; }

private:
    void renderText3Dleader(const std::shared_ptr<qrnsg::Text3DLeader>& leader) const;

    std::shared_ptr<IRendererFactory> m_factory;
    std::shared_ptr<qrn::IDocument> m_document;
    qrnsg::PLMaterial m_material;
    std::shared_ptr<qrnsg::Text3DLeader> m_leader;
};

} // namespace qrngl
