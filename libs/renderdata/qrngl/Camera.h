#pragma once

#include "qrngldata/qrngldata_export.h"
#include "qrnmath/Tuple.h"

namespace qrngl {

// A viewing camera: where it stands, what it looks at, how it projects, and the viewport it
// projects into. Near and far planes follow the scene sphere so that the model is never
// clipped by them.
class QRNGLDATA_EXPORT Camera {
public:
    enum Projection { PERSPECTIVE, ORTHOGRAPHIC };

    Camera();

    void setEye(const qrnmath::Vec3& eye) { m_eye = eye; }
    void setTarget(const qrnmath::Vec3& target) { m_target = target; }
    void setUp(const qrnmath::Vec3& up) { m_up = up; }
    const qrnmath::Vec3& eye() const { return m_eye; }
    const qrnmath::Vec3& target() const { return m_target; }
    const qrnmath::Vec3& up() const { return m_up; }
    qrnmath::Vec3 direction() const; // unit vector from eye to target
    float distance() const;          // eye to target

    void setProjection(Projection p) { m_projection = p; }
    Projection projection() const { return m_projection; }
    void setFieldOfView(float degrees) { m_fovy = degrees; }
    float fieldOfView() const { return m_fovy; }
    // Height in world units of the view at the target, used by the orthographic projection.
    void setViewHeight(float height) { m_viewHeight = height; }
    float viewHeight() const; // for a perspective camera, derived from distance and angle

    void setViewport(unsigned int width, unsigned int height);
    unsigned int viewportWidth() const { return m_width; }
    unsigned int viewportHeight() const { return m_height; }
    float aspect() const;

    // The sphere the scene lies in; near and far planes are derived from it.
    void setSceneSphere(const qrnmath::Vec3& center, float radius);
    float nearPlane() const;
    float farPlane() const;

    qrnmath::Mat4 getViewMatrix() const;
    qrnmath::Mat4 getProjectionMatrix() const;
    // World units per pixel at the target: scales things drawn in pixels to a constant size.
    float zoomFactor() const;

private:
    qrnmath::Vec3 m_eye;
    qrnmath::Vec3 m_target;
    qrnmath::Vec3 m_up;
    Projection m_projection;
    float m_fovy;
    float m_viewHeight;
    unsigned int m_width;
    unsigned int m_height;
    qrnmath::Vec3 m_sceneCenter;
    float m_sceneRadius;
};

} // namespace qrngl
