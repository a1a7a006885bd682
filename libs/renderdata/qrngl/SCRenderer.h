#pragma once

#include "qrngl/Camera.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/IPreRenderer.h"
#include "qrngl/IRenderer.h"
#include "qrngl/ITexture.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/Schema.h"

#include <memory>
#include <set>
#include <vector>

namespace qrngl {

// The renderer's own state in the document: camera, readiness, the single renderers of the
// frame, the ordered pre- and post-renderers, textures and display settings.
class QRNGLDATA_EXPORT SCRenderer : public qrnsg::Schema {
public:
    enum : unsigned char { READY = 1 };

    using PreRenderers = std::multiset<std::shared_ptr<IPreRenderer>, gtorder>;
    using PostRenderers = std::multiset<std::shared_ptr<IPostRenderer>, ltorder>;

    SCRenderer();
    std::shared_ptr<qrnsg::Schema> clone() const override;
    void clear() override;

    bool isReady() const { return (flags & READY) != 0; }
    void setReady(bool ready);

    // Equal orders keep the order of insertion (a multiset inserts at the upper bound).
    void addPreRenderer(const std::shared_ptr<IPreRenderer>& r);
    bool removePreRenderer(const std::shared_ptr<IPreRenderer>& r);
    void addPostRenderer(const std::shared_ptr<IPostRenderer>& r);
    bool removePostRenderer(const std::shared_ptr<IPostRenderer>& r);

    std::shared_ptr<Camera> camera;
    unsigned char flags = 0;
    // The frame's single renderers, by the place each takes in it.
    std::shared_ptr<IRenderer> openingRenderer;
    std::shared_ptr<IRenderer> viewRenderer;
    std::shared_ptr<IRenderer> sceneSetupRenderer;
    std::shared_ptr<IRenderer> closingRenderer;
    PreRenderers preRenderers;
    PostRenderers postRenderers;
    std::vector<std::shared_ptr<ITexture>> textures;
    int displayMode = 0;
    // Set: lines and texts are not drawn, unless the display mode is 1.
    bool suppressLinesAndTexts = false;
};

} // namespace qrngl
