#include "qrnimport/Shapes.h"

#include <cmath>

namespace qrnimport {

using qrnmath::Vec3;

namespace {
const float kPi = 3.14159265358979f;

void addQuad(qrnsg::Mesh& m, const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& d,
             const Vec3& n) {
    auto base = static_cast<unsigned int>(m.vertices.size());
    m.vertices.insert(m.vertices.end(), {a, b, c, d});
    m.normals.insert(m.normals.end(), {n, n, n, n});
    m.indices.insert(m.indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
}
} // namespace

qrnsg::Mesh Shapes::box(const Vec3& lo, const Vec3& hi) {
    qrnsg::Mesh m;
    Vec3 p[8];
    for (int i = 0; i < 8; ++i)
        p[i] = Vec3(i & 1 ? hi[0] : lo[0], i & 2 ? hi[1] : lo[1], i & 4 ? hi[2] : lo[2]);
    // Counter-clockwise seen from outside.
    addQuad(m, p[0], p[2], p[3], p[1], Vec3(0, 0, -1));
    addQuad(m, p[4], p[5], p[7], p[6], Vec3(0, 0, 1));
    addQuad(m, p[0], p[1], p[5], p[4], Vec3(0, -1, 0));
    addQuad(m, p[2], p[6], p[7], p[3], Vec3(0, 1, 0));
    addQuad(m, p[0], p[4], p[6], p[2], Vec3(-1, 0, 0));
    addQuad(m, p[1], p[3], p[7], p[5], Vec3(1, 0, 0));
    return m;
}

qrnsg::Polyline Shapes::boxEdges(const Vec3& lo, const Vec3& hi) {
    qrnsg::Polyline pl;
    Vec3 p[8];
    for (int i = 0; i < 8; ++i)
        p[i] = Vec3(i & 1 ? hi[0] : lo[0], i & 2 ? hi[1] : lo[1], i & 4 ? hi[2] : lo[2]);
    pl.addStrip({p[0], p[1], p[3], p[2], p[0]});
    pl.addStrip({p[4], p[5], p[7], p[6], p[4]});
    for (int i = 0; i < 4; ++i)
        pl.addStrip({p[i], p[i + 4]});
    return pl;
}

qrnsg::Mesh Shapes::cylinder(const Vec3& base, float r, float h, int segments) {
    qrnsg::Mesh m;
    segments = segments < 3 ? 3 : segments;
    for (int i = 0; i <= segments; ++i) {
        float a = 2.0f * kPi * static_cast<float>(i) / static_cast<float>(segments);
        Vec3 n(std::cos(a), std::sin(a), 0.0f);
        m.vertices.push_back(base + n * r);
        m.vertices.push_back(base + n * r + Vec3(0, 0, h));
        m.normals.push_back(n);
        m.normals.push_back(n);
    }
    for (unsigned int i = 0; i < static_cast<unsigned int>(segments); ++i) {
        unsigned int a = 2 * i;
        m.indices.insert(m.indices.end(), {a, a + 2, a + 3, a, a + 3, a + 1});
    }
    for (int cap = 0; cap < 2; ++cap) {
        Vec3 n(0, 0, cap ? 1.0f : -1.0f);
        Vec3 c = base + Vec3(0, 0, cap ? h : 0.0f);
        auto center = static_cast<unsigned int>(m.vertices.size());
        m.vertices.push_back(c);
        m.normals.push_back(n);
        for (int i = 0; i <= segments; ++i) {
            float a = 2.0f * kPi * static_cast<float>(i) / static_cast<float>(segments);
            m.vertices.push_back(c + Vec3(std::cos(a), std::sin(a), 0.0f) * r);
            m.normals.push_back(n);
        }
        for (unsigned int i = 0; i < static_cast<unsigned int>(segments); ++i) {
            if (cap)
                m.indices.insert(m.indices.end(), {center, center + 1 + i, center + 2 + i});
            else
                m.indices.insert(m.indices.end(), {center, center + 2 + i, center + 1 + i});
        }
    }
    return m;
}

qrnsg::Polyline Shapes::cylinderEdges(const Vec3& base, float r, float h, int segments) {
    qrnsg::Polyline pl;
    for (int cap = 0; cap < 2; ++cap) {
        std::vector<Vec3> ring;
        for (int i = 0; i <= segments; ++i) {
            float a = 2.0f * kPi * static_cast<float>(i) / static_cast<float>(segments);
            ring.push_back(base + Vec3(std::cos(a) * r, std::sin(a) * r, cap ? h : 0.0f));
        }
        pl.addStrip(ring);
    }
    return pl;
}

qrnsg::Mesh Shapes::sphere(const Vec3& c, float r, int rings, int segments) {
    qrnsg::Mesh m;
    for (int i = 0; i <= rings; ++i) {
        float v = kPi * static_cast<float>(i) / static_cast<float>(rings);
        for (int j = 0; j <= segments; ++j) {
            float u = 2.0f * kPi * static_cast<float>(j) / static_cast<float>(segments);
            Vec3 n(std::sin(v) * std::cos(u), std::sin(v) * std::sin(u), std::cos(v));
            m.vertices.push_back(c + n * r);
            m.normals.push_back(n);
        }
    }
    auto row = static_cast<unsigned int>(segments + 1);
    for (unsigned int i = 0; i < static_cast<unsigned int>(rings); ++i)
        for (unsigned int j = 0; j < static_cast<unsigned int>(segments); ++j) {
            unsigned int a = i * row + j, b = a + row;
            m.indices.insert(m.indices.end(), {a, b, b + 1, a, b + 1, a + 1});
        }
    return m;
}

} // namespace qrnimport
