#include "qrnsgutils/EntityMeasure.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <tuple>
#include <utility>

namespace qrnsgutils {

using qrnmath::Vec3;
using qrnmath::Vec3d;
using Curve = qrnsg::PartEntities::Curve;
using Surface = qrnsg::PartEntities::Surface;

namespace {

constexpr double kPi = 3.14159265358979323846;
// Sine of the angle below which two directions count as parallel: world data is float.
constexpr double kParallel = 1e-5;

// Measured in double: the closest points of nearly parallel elements lose too much in float.
Vec3d wide(const Vec3& v) {
    return Vec3d(v[0], v[1], v[2]);
}
Vec3 narrow(const Vec3d& v) {
    return Vec3(static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2]));
}
double clamp01(double x) {
    return std::min(1.0, std::max(0.0, x));
}

// Closest points of the segments p0p1 and q0q1, either of which may be a point; returns
// their squared distance. Parallel segments take the pair nearest p0 that the clamping allows.
double segmentSegment(const Vec3d& p0, const Vec3d& p1, const Vec3d& q0, const Vec3d& q1, Vec3d& c1,
                      Vec3d& c2) {
    const Vec3d d1 = p1 - p0, d2 = q1 - q0, r = p0 - q0;
    const double a = d1.dot(d1), e = d2.dot(d2), f = d2.dot(r), b = d1.dot(d2), c = d1.dot(r),
                 denom = a * e - b * b;
    double s = a > 0.0 && denom > 1e-12 * a * e ? clamp01((b * f - c * e) / denom) : 0.0;
    double t = e > 0.0 ? (b * s + f) / e : 0.0;
    if (t < 0.0 || t > 1.0 || e <= 0.0) {
        t = clamp01(t);
        s = a > 0.0 ? clamp01((b * t - c) / a) : 0.0;
    }
    c1 = p0 + d1 * s;
    c2 = q0 + d2 * t;
    return (c1 - c2).lengthSquared();
}

void grow(Vec3& lo, Vec3& hi, const Vec3& p) {
    for (int k = 0; k < 3; ++k) {
        lo[k] = std::min(lo[k], p[k]);
        hi[k] = std::max(hi[k], p[k]);
    }
}

double gap2(const Vec3& alo, const Vec3& ahi, const Vec3& blo, const Vec3& bhi) {
    double s = 0.0;
    for (int k = 0; k < 3; ++k) {
        const double d = std::max({0.0, double(blo[k]) - ahi[k], double(alo[k]) - bhi[k]});
        s += d * d;
    }
    return s;
}

// A point, two points of a polyline or a triangle's corners, pointing into the entity's data:
// faces of thousands of triangles are prepared on every measure.
struct Element {
    const Vec3* v;
    int n;
    std::uint32_t code; // the Morton code of its centre, which the hierarchy is ordered by
    void box(Vec3& lo, Vec3& hi) const {
        lo = hi = v[0];
        for (int i = 1; i < n; ++i)
            grow(lo, hi, v[i]);
    }
};

// An element's corners in double, a point being an edge of no length.
struct Corners {
    Vec3d v[3];
    int n;
    Vec3d normal; // a triangle's, unnormalised; zero for slivers, which their edges stand for
    explicit Corners(const Element& e) : n(e.n) {
        for (int i = 0; i < n; ++i)
            v[i] = wide(e.v[i]);
        const Vec3d ab = v[1] - v[0], ac = v[2] - v[0], c = cross(ab, ac);
        if (n == 3 && c.lengthSquared() > 1e-20 * ab.lengthSquared() * ac.lengthSquared())
            normal = c;
    }
    int edges() const { return n == 3 ? 3 : 1; }
    const Vec3d& end(int i) const { return v[(i + 1) % n]; }
    bool inside(const Vec3d& x) const {
        for (int i = 0; i < 3; ++i)
            if (cross(end(i) - v[i], x - v[i]).dot(normal) < 0.0)
                return false;
        return true;
    }
};

// What the edge pairs miss against the triangle t: e's corners over its inside, and e's
// edges crossing it.
void againstTriangle(const Corners& e, const Corners& t, double& best, Vec3d& pe, Vec3d& pt) {
    const Vec3d& n = t.normal;
    for (int i = 0; i < e.n; ++i) {
        const Vec3d foot = e.v[i] - n * (n.dot(e.v[i] - t.v[0]) / n.lengthSquared());
        const double d2 = (foot - e.v[i]).lengthSquared();
        if (d2 < best && t.inside(foot))
            std::tie(best, pe, pt) = std::make_tuple(d2, e.v[i], foot);
    }
    for (int i = 0; e.n > 1 && i < e.edges(); ++i) {
        const double dp = n.dot(e.v[i] - t.v[0]), dq = n.dot(e.end(i) - t.v[0]);
        if (dp * dq > 0.0 || dp == dq)
            continue;
        const Vec3d hit = e.v[i] + (e.end(i) - e.v[i]) * (dp / (dp - dq));
        if (t.inside(hit)) {
            best = 0.0;
            pe = pt = hit;
            return;
        }
    }
}

double closestElements(const Element& x, const Element& y, Vec3d& pa, Vec3d& pb) {
    const Corners a(x), b(y);
    double best = std::numeric_limits<double>::infinity();
    Vec3d p, q;
    for (int i = 0; i < a.edges(); ++i)
        for (int j = 0; j < b.edges(); ++j) {
            const double d2 = segmentSegment(a.v[i], a.end(i), b.v[j], b.end(j), p, q);
            if (d2 < best)
                std::tie(best, pa, pb) = std::make_tuple(d2, p, q);
        }
    if (best > 0.0 && b.normal.lengthSquared() > 0.0)
        againstTriangle(a, b, best, pa, pb);
    if (best > 0.0 && a.normal.lengthSquared() > 0.0)
        againstTriangle(b, a, best, pb, pa);
    return best;
}

// Boxes over an entity's elements, so that faces of thousands of triangles meet in a few hundred
// pairs; built on every measure, so cheaply: the elements in Morton order in leaves of eight
// under a complete binary tree (root 1, children 2k and 2k + 1, empty leaves inside out).
struct Tree {
    static constexpr std::size_t kLeaf = 8;
    std::vector<Element> elements;
    std::vector<Vec3> lo, hi;
    std::size_t leaves = 1; // the first leaf's index

    void build() {
        if (elements.empty())
            return;
        Vec3 min = elements[0].v[0], max = min;
        for (const Element& e : elements)
            for (int i = 0; i < e.n; ++i)
                grow(min, max, e.v[i]);
        for (Element& e : elements) {
            Vec3 c;
            for (int i = 0; i < e.n; ++i)
                c += e.v[i] / float(e.n);
            e.code = 0;
            for (int k = 0; k < 3; ++k) {
                const float at = max[k] > min[k] ? (c[k] - min[k]) / (max[k] - min[k]) : 0.0f;
                const auto q = static_cast<std::uint32_t>(clamp01(at) * 1023.0);
                for (int bit = 0; bit < 10; ++bit) // every third bit, for the Morton code
                    e.code |= ((q >> bit) & 1u) << (3 * bit + k);
            }
        }
        std::sort(elements.begin(), elements.end(),
                  [](const Element& a, const Element& b) { return a.code < b.code; });
        while (leaves * kLeaf < elements.size())
            leaves *= 2;
        lo.assign(2 * leaves, Vec3(std::numeric_limits<float>::infinity()));
        hi.assign(2 * leaves, -lo[0]);
        for (std::size_t i = 0; i < elements.size(); ++i)
            for (int j = 0; j < elements[i].n; ++j)
                grow(lo[leaves + i / kLeaf], hi[leaves + i / kLeaf], elements[i].v[j]);
        for (std::size_t k = leaves - 1; k >= 1; --k)
            for (int j = 0; j < 3; ++j) {
                lo[k][j] = std::min(lo[2 * k][j], lo[2 * k + 1][j]);
                hi[k][j] = std::max(hi[2 * k][j], hi[2 * k + 1][j]);
            }
    }
};

struct Hit {
    double d2 = std::numeric_limits<double>::infinity();
    Vec3d a, b;
    const Element *ea = nullptr, *eb = nullptr;
};

// The closest pair of elements, depth first through both hierarchies, nearer boxes first.
Hit closest(const Tree& A, const Tree& B) {
    Hit hit;
    // Parallel faces tie everywhere but for rounding: a pair that could only win by that is
    // not worth opening.
    const auto hopeless = [&hit](double bound) { return bound >= hit.d2 * (1.0 - 1e-9); };
    struct Pair {
        double bound;
        std::size_t a, b;
    };
    const auto pair = [&](std::size_t a, std::size_t b) {
        return Pair{gap2(A.lo[a], A.hi[a], B.lo[b], B.hi[b]), a, b};
    };
    std::vector<Pair> stack;
    if (!A.elements.empty() && !B.elements.empty())
        stack.push_back(pair(1, 1));
    while (!stack.empty()) {
        const Pair top = stack.back();
        stack.pop_back();
        const bool leafA = top.a >= A.leaves, leafB = top.b >= B.leaves;
        if (hopeless(top.bound))
            continue;
        if (leafA && leafB) {
            const std::size_t ia = (top.a - A.leaves) * Tree::kLeaf,
                              ib = (top.b - B.leaves) * Tree::kLeaf;
            for (std::size_t i = ia; i < std::min(ia + Tree::kLeaf, A.elements.size()); ++i)
                for (std::size_t j = ib; j < std::min(ib + Tree::kLeaf, B.elements.size()); ++j) {
                    const Element &x = A.elements[i], &y = B.elements[j];
                    Vec3 xlo, xhi, ylo, yhi;
                    x.box(xlo, xhi);
                    y.box(ylo, yhi);
                    Vec3d pa, pb;
                    if (hopeless(gap2(xlo, xhi, ylo, yhi)))
                        continue;
                    const double d2 = closestElements(x, y, pa, pb);
                    if (d2 < hit.d2)
                        hit = Hit{d2, pa, pb, &x, &y};
                }
            continue;
        }
        const bool openA = leafB || (!leafA && (A.hi[top.a] - A.lo[top.a]).lengthSquared() >=
                                                   (B.hi[top.b] - B.lo[top.b]).lengthSquared());
        Pair next[2] = {openA ? pair(2 * top.a, top.b) : pair(top.a, 2 * top.b),
                        openA ? pair(2 * top.a + 1, top.b) : pair(top.a, 2 * top.b + 1)};
        if (next[0].bound < next[1].bound) // the nearer pair on top, opened first
            std::swap(next[0], next[1]);
        for (const Pair& p : next)
            if (!hopeless(p.bound))
                stack.push_back(p);
    }
    return hit;
}

// The analytic description in double; types in the order pairs are matched in.
struct Shape {
    enum Type { NONE, POINT, LINE, CIRCLE, PLANE, CYLINDER, SPHERE } type = NONE;
    Vec3d o, a, end; // origin or centre; unit axis or normal; a line's far end
    double r = 0.0;
};

Vec3d axisPoint(const Shape& s, const Vec3d& p) {
    return s.o + s.a * s.a.dot(p - s.o);
}

// An edge's points give its line its ends: the length it came with may not be placed.
Shape shapeOf(const WorldEntity& e, const std::vector<Vec3>& points) {
    Shape s;
    const bool face = e.kind == WorldEntity::FACE, edge = e.kind == WorldEntity::EDGE;
    s.a = wide(face ? e.surface.axis : e.curve.axis).normalized();
    s.o = wide(face ? e.surface.origin : edge ? e.curve.origin : e.point);
    s.r = face ? e.surface.radius : e.curve.radius;
    const bool axis = s.a.lengthSquared() > 0.0, round = axis && s.r > 0.0;
    const Curve::Type curve = e.curve.type;
    const Surface::Type surface = e.surface.type;
    const bool line = curve == Curve::LINE && axis && !points.empty(),
               arc = (curve == Curve::CIRCLE || curve == Curve::ARC) && round;
    if (e.kind == WorldEntity::POINT)
        s.type = Shape::POINT;
    else if (edge)
        s.type = line ? Shape::LINE : arc ? Shape::CIRCLE : Shape::NONE;
    else if (face && surface == Surface::PLANE && axis)
        s.type = Shape::PLANE;
    else if (face && surface == Surface::CYLINDER && round)
        s.type = Shape::CYLINDER;
    else if (face && surface == Surface::SPHERE && s.r > 0.0)
        s.type = Shape::SPHERE;
    if (s.type == Shape::LINE) {
        s.end = axisPoint(s, wide(points.back()));
        s.o = axisPoint(s, wide(points.front()));
    }
    return s;
}

// The point of the shape nearest p (planes and cylinders unbounded, a line its segment);
// where every direction is as near (p on the axis), the one towards hint.
Vec3d foot(const Shape& s, const Vec3d& p, const Vec3d& hint) {
    const auto unit = [&s](const Vec3d& v, const Vec3d& fallback) {
        return (v.length() > 1e-6 * s.r ? v : fallback).normalized();
    };
    const auto radial = [&s](const Vec3d& v) { return v - s.a * s.a.dot(v); };
    const Vec3d d = s.end - s.o;
    switch (s.type) {
    case Shape::LINE:
        return d.lengthSquared() > 0.0 ? s.o + d * clamp01((p - s.o).dot(d) / d.lengthSquared())
                                       : s.o;
    case Shape::PLANE:
        return p - s.a * s.a.dot(p - s.o);
    case Shape::CYLINDER:
    case Shape::CIRCLE:
        return (s.type == Shape::CYLINDER ? axisPoint(s, p) : s.o) +
               unit(radial(p - s.o), radial(hint - s.o)) * s.r;
    case Shape::SPHERE:
        return s.o + unit(p - s.o, hint - s.o) * s.r;
    default:
        return s.o;
    }
}

// Closest points of two shapes near the tessellated ones pa and pb, for the pairs with a
// closed form; false for the others.
bool pairRule(const Shape& A, const Shape& B, const Vec3d& pa, const Vec3d& pb, Vec3d& fa,
              Vec3d& fb) {
    if (A.type > B.type)
        return pairRule(B, A, pb, pa, fb, fa);
    using S = Shape;
    const auto is = [&](S::Type x, S::Type y) { return A.type == x && B.type == y; };
    const bool same = cross(A.a, B.a).length() <= kParallel;
    const bool square = std::abs(A.a.dot(B.a)) <= kParallel;
    const bool coaxial = same && (axisPoint(A, B.o) - B.o).length() <= kParallel * (A.r + B.r);
    if (A.type == S::POINT) {
        fa = A.o;
        fb = foot(B, A.o, pb);
        return true;
    }
    if (is(S::LINE, S::LINE)) {
        segmentSegment(A.o, A.end, B.o, B.end, fa, fb);
        return true;
    }
    // The distance stays the same all along A: measure from A's point nearest pa.
    if ((is(S::LINE, S::PLANE) && square) || (is(S::LINE, S::CYLINDER) && same) ||
        (is(S::CIRCLE, S::PLANE) && same) || (is(S::PLANE, S::PLANE) && same) ||
        ((is(S::CIRCLE, S::CIRCLE) || is(S::CIRCLE, S::CYLINDER)) && coaxial)) {
        fa = foot(A, pa, pa);
        fb = foot(B, fa, pb);
        return true;
    }
    if (!is(S::CYLINDER, S::CYLINDER) || !same)
        return false;
    // Parallel cylinders apart: along the line between their axes.
    const Vec3d qa = axisPoint(A, pa), d = axisPoint(B, qa) - qa;
    const double D = d.length();
    if (D <= A.r + B.r)
        return false;
    fa = qa + d * (A.r / D);
    fb = qa + d * (1.0 - B.r / D);
    return true;
}

// An entity made ready for measuring: its tessellation in a hierarchy and its analytic shape.
struct Prepared {
    const WorldEntity& entity;
    const std::vector<Vec3> points; // an edge's
    Shape shape;
    Tree tree;
    double size = 0.0, rounding = 0.0; // of its box; what float coordinates blur there

    explicit Prepared(const WorldEntity& e)
        : entity(e), points(e.kind == WorldEntity::EDGE ? e.polyline : std::vector<Vec3>()),
          shape(shapeOf(e, points)) {
        const bool face = e.kind == WorldEntity::FACE;
        auto& elements = tree.elements;
        elements.reserve(points.size() + (face ? e.triangles.size() / 3 : 0) + 1);
        if (e.kind == WorldEntity::POINT || points.size() == 1)
            elements.push_back({points.empty() ? &e.point : points.data(), 1, 0});
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
            elements.push_back({&points[i], 2, 0});
        for (std::size_t i = 0; face && i + 2 < e.triangles.size(); i += 3)
            elements.push_back({&e.triangles[i], 3, 0});
        tree.build();
        if (elements.empty())
            return;
        const Vec3 &lo = tree.lo[1], &hi = tree.hi[1];
        size = wide(hi - lo).length();
        rounding = 1e-6 * (size + wide(lo).length() + wide(hi).length());
    }

    // Whether the point of the shape p lies on the entity: off its tessellation by no more than
    // the nearest element's chord error (tol), that element's corners lying on the shape.
    bool holds(const Vec3d& p, double& tol) const {
        Tree single;
        const Vec3 q = narrow(p);
        single.elements.push_back({&q, 1, 0});
        single.build();
        const Hit hit = closest(tree, single);
        if (!hit.ea)
            return false;
        const Corners c(*hit.ea);
        const auto stray = [this](const Vec3d& x) { return (foot(shape, x, x) - x).length(); };
        double vertex = 0.0, inner = 0.0;
        Vec3d sum;
        for (int i = 0; i < c.n; ++i) {
            vertex = std::max(vertex, stray(c.v[i]));
            inner = std::max(inner, stray((c.v[i] + c.end(i)) * 0.5));
            sum += c.v[i];
        }
        tol = 2.0 * std::max({vertex, inner, stray(sum / double(c.n))}) + rounding;
        return vertex <= 1e-3 * size + rounding && (hit.a - p).length() <= tol;
    }
};

// A fixed order of entities, so that measuring b to a gives a to b's points swapped.
bool precedes(const WorldEntity& x, const WorldEntity& y) {
    const auto less = [](const Vec3& p, const Vec3& q) {
        return std::lexicographical_compare(p.data(), p.data() + 3, q.data(), q.data() + 3);
    };
    if (x.kind != y.kind || x.point != y.point)
        return x.kind != y.kind ? x.kind < y.kind : less(x.point, y.point);
    if (x.polyline != y.polyline)
        return std::lexicographical_compare(x.polyline.begin(), x.polyline.end(),
                                            y.polyline.begin(), y.polyline.end(), less);
    return std::lexicographical_compare(x.triangles.begin(), x.triangles.end(), y.triangles.begin(),
                                        y.triangles.end(), less);
}

MeasureResult swapped(MeasureResult r) {
    std::swap(r.a, r.b);
    return r;
}

// An oriented plane normal (normal), or a line or axis direction. A curve's: its chord nearest
// the other entity (or the whole edge's); an unknown face's: its triangle's normal there (or
// the face's mean normal where that is a sliver).
bool directionOf(const Prepared& P, const Element* near, Vec3d& d, bool& normal, bool& exact) {
    const auto type = P.shape.type;
    const WorldEntity& e = P.entity;
    exact = type == Shape::LINE || type == Shape::PLANE || type == Shape::CYLINDER ||
            (e.kind == WorldEntity::FACE && e.surface.type == Surface::CONE &&
             P.shape.a.lengthSquared() > 0.0);
    normal = e.kind == WorldEntity::FACE && (type == Shape::PLANE || !exact);
    if (exact) {
        d = P.shape.a;
    } else if (near && e.kind == WorldEntity::EDGE) {
        const Corners c(*near);
        d = c.n == 2 ? c.v[1] - c.v[0] : Vec3d();
        if (d.lengthSquared() <= 0.0)
            d = wide(P.points.back()) - wide(P.points.front());
    } else if (near && e.kind == WorldEntity::FACE) {
        d = Corners(*near).normal;
        for (std::size_t i = 0; d.lengthSquared() <= 0.0 && i < P.tree.elements.size(); ++i)
            d += Corners(P.tree.elements[i]).normal;
    }
    d = d.normalized();
    return d.lengthSquared() > 0.0;
}

// A circle through three well-spread points of the polyline (a third of it apart, whether it
// closes or not) that all its points lie on.
bool fitCircle(const std::vector<Vec3>& p, Vec3d& centre, Vec3d& axis, double& radius) {
    const std::size_t n = p.size();
    Vec3 c;
    float r = 0.0f;
    if (n < 3 || !EntityMeasure::circleThrough(p[0], p[n / 3], p[2 * n / 3], c, r))
        return false;
    centre = wide(c);
    radius = r;
    axis = cross(wide(p[n / 3]) - wide(p[0]), wide(p[2 * n / 3]) - wide(p[0])).normalized();
    for (const Vec3& q : p) {
        const Vec3d w = wide(q) - centre;
        if (std::abs(w.dot(axis)) > 1e-3 * radius || std::abs(w.length() - radius) > 1e-3 * radius)
            return false;
    }
    return true;
}

} // namespace

MeasureResult EntityMeasure::distance(const WorldEntity& first, const WorldEntity& second) {
    if (precedes(second, first))
        return swapped(distance(second, first));
    MeasureResult result;
    const Prepared A(first), B(second);
    const Hit hit = closest(A.tree, B.tree);
    Vec3d fa = hit.a, fb = hit.b, ra, rb;
    double ta = 0.0, tb = 0.0;
    // Exact closest points from the shapes, kept only where they lie on both entities (inside
    // them) and agree with the tessellated distance.
    result.valid = hit.ea != nullptr;
    result.exact = result.valid && A.shape.type && B.shape.type &&
                   pairRule(A.shape, B.shape, hit.a, hit.b, ra, rb) && A.holds(ra, ta) &&
                   B.holds(rb, tb) && std::abs((ra - rb).length() - std::sqrt(hit.d2)) <= ta + tb;
    if (result.exact) {
        fa = ra;
        fb = rb;
    }
    result.value = static_cast<float>((fa - fb).length());
    result.a = narrow(fa);
    result.b = narrow(fb);
    return result;
}

MeasureResult EntityMeasure::angle(const WorldEntity& first, const WorldEntity& second) {
    if (precedes(second, first))
        return swapped(angle(second, first));
    MeasureResult result;
    const Prepared A(first), B(second);
    const Hit hit = closest(A.tree, B.tree);
    Vec3d da, db;
    bool na = false, nb = false, ea = false, eb = false;
    if (!directionOf(A, hit.ea, da, na, ea) || !directionOf(B, hit.eb, db, nb, eb))
        return result;
    const double c = da.dot(db), s = cross(da, db).length();
    const double value = na && nb   ? std::atan2(s, c)
                         : na == nb ? std::atan2(s, std::abs(c))
                                    : std::atan2(std::abs(c), s);
    result.valid = true;
    result.value = static_cast<float>(value);
    result.exact = ea && eb;
    result.a = narrow(hit.a);
    result.b = narrow(hit.b);
    return result;
}

bool EntityMeasure::circle(const WorldEntity& entity, Vec3& centre, Vec3& axis, float& radius,
                           bool* exact) {
    const Shape s = shapeOf(entity, entity.polyline);
    Vec3d c = s.o, n = s.a, sum;
    double r = s.r, weight = 0.0;
    const auto& t = entity.triangles;
    for (std::size_t i = 0; s.type == Shape::CYLINDER && i + 2 < t.size(); i += 3) {
        const Vec3d p0 = wide(t[i]), p1 = wide(t[i + 1]), p2 = wide(t[i + 2]);
        const double w = cross(p1 - p0, p2 - p0).length();
        sum += (p0 + p1 + p2) * (w / 3.0);
        weight += w;
    }
    if (weight > 0.0) // a cylinder's centre: where its axis passes its middle
        c = axisPoint(s, sum / weight);
    if (s.type == Shape::SPHERE && n.lengthSquared() <= 0.0)
        n = Vec3d(0.0, 0.0, 1.0);
    const bool known = s.type == Shape::CIRCLE || s.type >= Shape::CYLINDER; // or a sphere
    if (!known && (entity.kind != WorldEntity::EDGE || entity.curve.type == Curve::LINE ||
                   !fitCircle(entity.polyline, c, n, r)))
        return false;
    centre = narrow(c);
    axis = narrow(n);
    radius = static_cast<float>(r);
    if (exact)
        *exact = known;
    return true;
}

float EntityMeasure::length(const WorldEntity& edge) {
    const std::vector<Vec3>& p = edge.polyline;
    const Curve& c = edge.curve;
    const Shape s = shapeOf(edge, p);
    if (edge.kind != WorldEntity::EDGE)
        return 0.0f;
    if (c.type == Curve::LINE) // its points are its ends, where the length may not be placed
        return p.size() >= 2 ? static_cast<float>(wide(p.front()).distance(wide(p.back())))
                             : c.length;
    if (s.type != Shape::CIRCLE)
        return tapeLength(p);
    if (p.size() < 2 || p.front().distance(p.back()) <= 1e-4 * s.r)
        return p.size() < 2 && c.type == Curve::ARC ? c.length
                                                    : static_cast<float>(2.0 * kPi * s.r);
    // The angle the points turn through about the centre: exact though the chords are not.
    double sweep = 0.0;
    for (std::size_t i = 0; i + 1 < p.size(); ++i) {
        Vec3d u = wide(p[i]) - s.o, v = wide(p[i + 1]) - s.o;
        u -= s.a * s.a.dot(u);
        v -= s.a * s.a.dot(v);
        sweep += std::atan2(s.a.dot(cross(u, v)), u.dot(v));
    }
    return static_cast<float>(s.r * std::abs(sweep));
}

float EntityMeasure::area(const WorldEntity& face) {
    double sum = 0.0;
    const auto& t = face.triangles;
    for (std::size_t i = 0; face.kind == WorldEntity::FACE && i + 2 < t.size(); i += 3)
        sum += 0.5 * cross(wide(t[i + 1]) - wide(t[i]), wide(t[i + 2]) - wide(t[i])).length();
    return static_cast<float>(sum);
}

float EntityMeasure::tapeLength(const std::vector<Vec3>& points) {
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
        sum += wide(points[i]).distance(wide(points[i + 1]));
    return static_cast<float>(sum);
}

bool EntityMeasure::circleThrough(const Vec3& p0, const Vec3& p1, const Vec3& p2, Vec3& centre,
                                  float& radius) {
    const Vec3d a = wide(p0) - wide(p2), b = wide(p1) - wide(p2), n = cross(a, b);
    const double aa = a.lengthSquared(), bb = b.lengthSquared(), nn = n.lengthSquared();
    if (nn <= 1e-10 * aa * bb || nn <= 0.0) // the sine of the angle at p2 below 1e-5
        return false;
    const Vec3d c = wide(p2) + cross(b * aa - a * bb, n) / (2.0 * nn);
    centre = narrow(c);
    radius = static_cast<float>((c - wide(p0)).length());
    return true;
}

} // namespace qrnsgutils
