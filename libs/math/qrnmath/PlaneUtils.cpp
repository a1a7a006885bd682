#include "qrnmath/PlaneUtils.h"

#include <cmath>

namespace qrnmath {

namespace {

// Plane equation at p, not divided by the normal's length.
float evaluate(const Vec4& plane, const Vec3& p) {
    return plane[0] * p[0] + plane[1] * p[1] + plane[2] * p[2] + plane[3];
}

} // namespace

Vec4 PlaneUtils::fromPointNormal(const Vec3& point, const Vec3& normal) {
    Vec3 n = normal.normalized();
    return Vec4(n[0], n[1], n[2], -n.dot(point));
}

bool PlaneUtils::fromPoints(const Vec3& a, const Vec3& b, const Vec3& c, Vec4& plane) {
    Vec3 u = b - a, v = c - a;
    Vec3 n = cross(u, v);
    // Relative test: |u x v| = |u||v| sin(angle), so the threshold does not depend on scale.
    float len = n.length();
    if (len == 0.0f || len <= 1e-6f * u.length() * v.length())
        return false;
    plane = fromPointNormal(a, n);
    return true;
}

Vec3 PlaneUtils::normal(const Vec4& plane) {
    return Vec3(plane[0], plane[1], plane[2]);
}

Vec3 PlaneUtils::pointOn(const Vec4& plane) {
    Vec3 n = normal(plane);
    float l2 = n.lengthSquared();
    // Divide by |n|^2 so planes from elsewhere (e.g. frustum rows) need not be normalised.
    return l2 > 0.0f ? n * (-plane[3] / l2) : Vec3();
}

float PlaneUtils::signedDistance(const Vec4& plane, const Vec3& p) {
    float l = normal(plane).length();
    float e = evaluate(plane, p);
    return l > 0.0f ? e / l : e;
}

Vec3 PlaneUtils::project(const Vec4& plane, const Vec3& p) {
    return p - normal(plane).normalized() * signedDistance(plane, p);
}

Vec4 PlaneUtils::flip(const Vec4& plane) {
    return -plane;
}

bool PlaneUtils::intersect(const Vec4& plane, const Ray& ray, float& t) {
    Vec3 n = normal(plane);
    float denom = n.dot(ray.direction());
    if (std::abs(denom) <= 1e-7f * n.length())
        return false;
    t = -evaluate(plane, ray.origin()) / denom;
    return true;
}

bool PlaneUtils::intersectSegment(const Vec4& plane, const Vec3& a, const Vec3& b, Vec3& hit) {
    float da = evaluate(plane, a), db = evaluate(plane, b);
    // Same side, or the whole segment lies in the plane (no single crossing point).
    if ((da > 0.0f && db > 0.0f) || (da < 0.0f && db < 0.0f) || da == db)
        return false;
    float t = da / (da - db);
    hit = a + (b - a) * t;
    return true;
}

} // namespace qrnmath
