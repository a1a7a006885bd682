#pragma once

#include "qrn/IDocument.h"
#include "qrngl/Camera.h"
#include "qrnglutils/qrnglutils_export.h"
#include "qrnsg/BBox.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneRes.h"

#include <memory>

namespace qrnglutils {

// Bounds of what the scene shows, and the view sphere that fits them.
class QRNGLUTILS_EXPORT BBoxUtils {
public:
    // The box of the mesh and polyline primitives of the run-time component, each drawable's
    // box moved by the primitive's run-time transform (where its flags say it has one); with
    // visibleOnly, only primitives whose flags have the visible bit. Drawable indices refer to
    // the scene component, or to the resource component in the second form.
    static qrnsg::BBox get(const qrnsg::SCScene& scene, const qrnsg::SCSceneRT& rt,
                           bool visibleOnly);
    static qrnsg::BBox get(const qrnsg::SCSceneRes& resources, const qrnsg::SCSceneRT& rt,
                           bool visibleOnly);
    // The box of the scene's root: every primitive, from the scene component or, when that
    // holds none, the resources; empty when a component is missing.
    static qrnsg::BBox getRoot(const std::shared_ptr<qrn::IDocument>& document);
    // The box's bounding sphere; false, leaving both unchanged, for an empty box.
    static bool getSphere(const qrnsg::BBox& box, qrnmath::Vec3& centre, float& radius);
    // Turns a bounding radius into the view-sphere radius that makes the box fill the
    // camera's view when the camera has that rotation. An empty box leaves it unchanged.
    static void updateCameraPosition(const std::shared_ptr<qrngl::Camera>& camera,
                                     const qrnsg::BBox& box, const qrnmath::Mat4& rotation,
                                     float& radius);
};

} // namespace qrnglutils
