#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnmath/Tuple.h"

namespace qrngl {

// The viewing camera, described the way the view tools move it: a view sphere that the view
// fits at zoom factor 1, a rotation of the model about the sphere's centre, a pan in view
// space and a zoom factor. Everything else (eye, target, up, matrices, depth range) is derived.
//
// View space: x right, y up, the eye looking down -z. A world point p goes to
//     (R (p - centre)) + (panX, panY, -distance)
// where R is the model rotation and distance is the eye's distance from the sphere's centre.
// At zoom factor 1 the view's smaller extent spans the sphere's diameter in the plane
// through its centre; at zoom factor z it spans z times that, in both projections.
//
// Camera arithmetic belongs to CameraHelper; this class only holds the state and derives.
class QRNGLDATA_EXPORT Camera {
public:
    // Values as the projection setting stores them: 5 is orthographic.
    enum Projection { PERSPECTIVE = 0, ORTHOGRAPHIC = 5 };

    Camera();

    // The view sphere; a radius that is not a positive number leaves the radius unchanged.
    void setSphere(const qrnmath::Vec3& centre, float radius);
    const qrnmath::Vec3& sphereCentre() const { return m_centre; }
    float sphereRadius() const { return m_radius; }

    // World to view rotation about the sphere's centre: column-major, rotation only. Made
    // orthonormal again as it is set, so that thousands of small turns never skew or scale
    // the view; a matrix that is not a rotation (degenerate, not finite) is ignored.
    void setModelRotation(const qrnmath::Mat4& rotation);
    const qrnmath::Mat4& modelRotation() const { return m_rotation; }
    // The pan in view space, world units at the sphere's centre. Its z is kept but takes no
    // part in the view: depth is the sphere's business.
    void setModelTranslation(const qrnmath::Vec3& t) { m_translation = t; }
    const qrnmath::Vec3& modelTranslation() const { return m_translation; }
    // 1 shows the sphere, smaller values zoom in. Sizes in world units scaled by it keep their
    // size on screen. A value that is not a positive number is ignored; others are kept within
    // minZoomFactor() and maxZoomFactor(), where the projection stays finite and exact enough.
    void setZoomFactor(float zoom);
    static float minZoomFactor();
    static float maxZoomFactor();
    float zoomFactor() const { return m_zoom; }

    void setProjection(Projection p) { m_projection = p; }
    Projection projection() const { return m_projection; }
    bool isOrthographic() const { return m_projection == ORTHOGRAPHIC; }
    // The angle across the viewport's smaller extent, in degrees (clamped to 1..170). It sets
    // the eye's distance in both projections, so that switching projection keeps the scale.
    void setFieldOfView(float degrees);
    float fieldOfView() const { return m_fovy; }

    void setViewport(unsigned int width, unsigned int height);
    unsigned int viewportWidth() const { return m_width; }
    unsigned int viewportHeight() const { return m_height; }
    float aspect() const;

    // What must stay inside the depth range besides the view sphere: the whole model, when the
    // view sphere was fitted to a box or zoomed to a detail. A radius <= 0 clears it.
    void setSceneSphere(const qrnmath::Vec3& centre, float radius);
    const qrnmath::Vec3& sceneCentre() const { return m_sceneCentre; }
    float sceneRadius() const { return m_sceneRadius; }

    // Eye to sphere centre: radius / tan(fov / 2).
    float viewDistance() const;
    // Half the view's width and height in world units at the sphere centre's depth, zoom
    // applied.
    float halfWidth() const;
    float halfHeight() const;
    // World units per pixel at the sphere centre's depth.
    float unitsPerPixel() const;

    // Distances along the view direction; together they enclose the view and scene spheres.
    float nearPlane() const;
    float farPlane() const;

    qrnmath::Mat4 getViewMatrix() const;
    qrnmath::Mat4 getProjectionMatrix() const;

    // In world space: the projection centre, the point shown in the middle of the view at the
    // sphere centre's depth, and the unit view direction and up vector.
    qrnmath::Vec3 eye() const;
    qrnmath::Vec3 target() const;
    qrnmath::Vec3 direction() const;
    qrnmath::Vec3 up() const;
    qrnmath::Vec3 right() const;

private:
    void depthRange(float& zNear, float& zFar) const;

    qrnmath::Vec3 m_centre;
    float m_radius;
    qrnmath::Mat4 m_rotation;
    qrnmath::Vec3 m_translation;
    float m_zoom;
    Projection m_projection;
    float m_fovy;
    unsigned int m_width;
    unsigned int m_height;
    qrnmath::Vec3 m_sceneCentre;
    float m_sceneRadius;
};

} // namespace qrngl
