#pragma once

#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"

namespace qrnglutils {

// Prepares the drawables of a scene: one strip entry per mesh, polyline, point set and text, at
// the scene's own indices.
class QRNGLUTILS_EXPORT SceneBuilder {
public:
    // Without fonts the texts get no drawables.
    static void buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips);
    // Texts in the outlines of `face`, characters it lacks from `fallback`.
    static void buildDrawables(const qrnsg::SCScene& scene, qrngl::SCStripRenderer& strips,
                               const std::wstring& face, const std::wstring& fallback);
    // Uploads every entry's geometry now (needs a current context), so that no frame pays for it.
    static void prepare(const qrngl::SCStripRenderer& strips);
};

} // namespace qrnglutils
