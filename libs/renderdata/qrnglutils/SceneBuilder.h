#pragma once

#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

namespace qrnglutils {

// Prepares the drawables of a scene: one strip entry per mesh, polyline and point set, at the
// scene's own indices.
class QRNGLUTILS_EXPORT SceneBuilder {
public:
    static void buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips);
    // Uploads every entry's geometry now (needs a current context), so that no frame pays for it.
    static void prepare(const qrngl::SCStripRenderer& strips);
};

} // namespace qrnglutils
