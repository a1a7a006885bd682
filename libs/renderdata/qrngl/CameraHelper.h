#pragma once

#include "qrngl/Camera.h"
#include "qrngldata/qrngldata_export.h"
#include "qrnsg/BBox.h"

#include <memory>

namespace qrngl {

// All camera arithmetic goes through here. Window coordinates are pixels from the viewport's
// top-left corner, y growing downwards, as mouse events give them. Every operation is a no-op
// on an empty camera pointer.
class QRNGLDATA_EXPORT CameraHelper {
public:
    using CameraPtr = std::shared_ptr<Camera>;

    static void setViewport(unsigned int width, unsigned int height, const CameraPtr& camera);
    // The rotation that turns a text drawn in its own XY plane to face the viewer: the inverse
    // of the view's rotation.
    static qrnmath::Mat4 getBillboardRotation(const CameraPtr& camera);

    // Mouse motion. rotate turns the model about the view sphere's centre, a drag across the
    // viewport's smaller extent turning it half round; translate pans so that the model under
    // the pointer (at the sphere centre's depth) follows it.
    static void rotate(const CameraPtr& camera, int dx, int dy);
    static void translate(const CameraPtr& camera, int dx, int dy);
    // Zooms by factor about the window point (x, y), which stays where it is: in (the zoom
    // factor divided by factor) when in is set, else out.
    static void zoom(const CameraPtr& camera, int x, int y, float factor, bool in);
    // Zooms so that the window rectangle fills the view (its larger relative side does).
    static void zoomBox(const CameraPtr& camera, int x0, int y0, int x1, int y1);

    // Steps, as view animation applies them. rotateBy turns the model about the sphere's
    // centre by q in world space (after the current rotation's own frame: modelRotation * q).
    static void rotateBy(const CameraPtr& camera, const qrnmath::Vec4& q);
    // Adds to the pan, the sphere's centre and its radius (a radius that would not stay
    // positive is left as it is).
    static void translateBy(const CameraPtr& camera, const qrnmath::Vec3& translation,
                            const qrnmath::Vec3& centreStep, float radiusStep);
    // Adds to the zoom factor, which stays positive.
    static void zoomBy(const CameraPtr& camera, float step);
    static void setRotation(const CameraPtr& camera, const qrnmath::Mat4& rotation);

    // Looks from eye at target with up as near as can be: the rotation follows, target becomes
    // the sphere's centre and the pan is cleared; radius and zoom stay. False, changing
    // nothing, when eye and target coincide or up lies along the view.
    static bool lookAt(const CameraPtr& camera, const qrnmath::Vec3& eye,
                       const qrnmath::Vec3& target, const qrnmath::Vec3& up);
    // Fits the sphere: pan cleared, zoom factor 1.
    static void lookAt(const CameraPtr& camera, const qrnmath::Vec3& centre, float radius);
    // Fits the box as the camera now turns it, and keeps it all in the depth range. An empty
    // box changes nothing.
    static void lookAt(const CameraPtr& camera, const qrnsg::BBox& box);
    // The radius of the view sphere about the box's centre that makes the box fill the view,
    // seen with that rotation, with a small border; 1 for an empty or flat-to-a-point box.
    static float getFitRadius(const CameraPtr& camera, const qrnsg::BBox& box,
                              const qrnmath::Mat4& rotation);

    static void getSphere(const CameraPtr& camera, qrnmath::Vec3& centre, float& radius);
    // The camera's eye, target (the point in the middle of the view at the sphere centre's
    // depth), unit view direction and unit up vector. With orthographic set the eye stands
    // where a camera of the same field of view would show the zoomed view without narrowing
    // its lens (the form in which an orthographic view is described); otherwise it is the
    // camera's own eye.
    static void getEyeTargetUp(const CameraPtr& camera, qrnmath::Vec3& eye, qrnmath::Vec3& target,
                               qrnmath::Vec3& direction, qrnmath::Vec3& up, bool orthographic);
    // Model (world) coordinates to window pixels: x, y as above, z the depth in [0, 1].
    static qrnmath::Mat4 getModelToScreen(const CameraPtr& camera);
};

} // namespace qrngl
