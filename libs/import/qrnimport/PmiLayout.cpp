#include "qrnimport/PmiLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qrnimport {

namespace {

using qrnmath::Vec3;
using Item = ModelData::PmiItem;

// A placed text's box in its plane, for keeping the next ones clear of it.
struct Box {
    Vec3 centre, x, y, normal;
    float halfWidth = 0.0f, halfHeight = 0.0f;
};

bool overlaps(const Box& a, const Box& b) {
    // Texts in planes far apart in angle or offset do not cover one another on a drawing.
    if (std::abs(a.normal.dot(b.normal)) < 0.9f ||
        std::abs(a.normal.dot(b.centre - a.centre)) > 2.0f * a.halfHeight)
        return false;
    const Vec3 d = b.centre - a.centre;
    const float alongX = std::abs(d.dot(a.x)), alongY = std::abs(d.dot(a.y));
    const float bx = std::abs(b.x.dot(a.x)) * b.halfWidth + std::abs(b.y.dot(a.x)) * b.halfHeight;
    const float by = std::abs(b.x.dot(a.y)) * b.halfWidth + std::abs(b.y.dot(a.y)) * b.halfHeight;
    return alongX < a.halfWidth + bx && alongY < a.halfHeight + by;
}

// Texts that cover one another on screen in a standard view where both face the viewer,
// whatever their planes: along the axes and the isometric line of sight (a view and its
// opposite see the same overlaps).
bool coversOnScreen(const Box& a, const Box& b) {
    static const Vec3 sights[] = {Vec3(1, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1),
                                  Vec3(-1, 1, -1).normalized()};
    auto apart = [](const Box& p, const Box& q, const Vec3& axis) {
        auto reach = [&](const Box& r) {
            return std::abs(r.x.dot(axis)) * r.halfWidth + std::abs(r.y.dot(axis)) * r.halfHeight;
        };
        return std::abs((q.centre - p.centre).dot(axis)) >= reach(p) + reach(q);
    };
    for (const Vec3& sight : sights) {
        // A text seen edge-on is no text in that view: nothing to keep clear.
        if (std::abs(a.normal.dot(sight)) < 0.25f || std::abs(b.normal.dot(sight)) < 0.25f)
            continue;
        const Vec3 u =
            qrnmath::cross(sight, std::abs(sight[2]) < 0.9f ? Vec3(0, 0, 1) : Vec3(1, 0, 0))
                .normalized();
        if (!apart(a, b, u) && !apart(a, b, qrnmath::cross(sight, u)))
            return true;
    }
    return false;
}

// How far from p along unit v the ray leaves the box (0 when p is outside it already).
float exitDistance(const qrnsg::BBox& box, const Vec3& p, const Vec3& v) {
    float far = std::numeric_limits<float>::max();
    for (int i = 0; i < 3; ++i) {
        if (std::abs(v[i]) < 1e-9f) {
            if (p[i] < box.min()[i] || p[i] > box.max()[i])
                return 0.0f;
            continue;
        }
        const float t0 = (box.min()[i] - p[i]) / v[i], t1 = (box.max()[i] - p[i]) / v[i];
        far = std::min(far, std::max(t0, t1));
    }
    return std::max(0.0f, far == std::numeric_limits<float>::max() ? 0.0f : far);
}

// The box a text would take with its anchor at `anchor`.
Box boxOf(const qrnsg::Text& text, const Vec3& anchor) {
    Box b;
    text.frame(b.x, b.y, b.normal);
    b.centre = anchor + b.x * text.middleFromAnchor();
    b.halfWidth = text.estimatedWidth() / 2.0f;
    b.halfHeight = 0.75f * text.height;
    return b;
}

// An arrowhead at the target, pointing at it from the text; a datum's feature triangle.
void mark(Item& item, const Vec3& target, const Vec3& towardText, const Vec3& normal, float size) {
    const Vec3 side = qrnmath::cross(normal, towardText).normalized();
    if (item.kind == Item::DATUM) {
        const Vec3 a = target + side * (0.45f * size), b = target - side * (0.45f * size);
        const Vec3 apex = target + towardText * (0.8f * size);
        // Filled with lines across it, as drawings fill the triangle.
        std::vector<Vec3> fill{a, b, apex, a};
        for (int i = 1; i < 6; ++i) {
            const float t = static_cast<float>(i) / 6.0f;
            fill.push_back(a + (apex - a) * t);
            fill.push_back(b + (apex - b) * t);
        }
        item.leaders.addStrip(fill);
        return;
    }
    const Vec3 back = target + towardText * size;
    item.leaders.addStrip({back + side * (0.3f * size), target, back - side * (0.3f * size)});
}

} // namespace

float PmiLayout::textHeight(float diagonal) {
    return diagonal > 0.0f ? 0.025f * diagonal : 1.0f;
}

void PmiLayout::arrange(ModelData& model, std::size_t first, const qrnsg::BBox& bounds) {
    qrnsg::BBox box = bounds.isEmpty() ? model.bbox() : bounds;
    for (const auto& item : model.pmi)
        if (item.hasTarget)
            box.add(item.target);
    if (box.isEmpty())
        return;
    const Vec3 centre = box.center();
    const float diagonal = box.diagonal();
    const float h = textHeight(diagonal);
    qrnsg::BBox clear = box;
    clear.add(box.min() - Vec3(1, 1, 1) * (0.04f * diagonal));
    clear.add(box.max() + Vec3(1, 1, 1) * (0.04f * diagonal));

    // Texts without a plane of their own face the first saved view, else stand upright facing
    // the front (Z is up).
    Vec3 defaultX(1, 0, 0), defaultY(0, 0, 1);
    if (!model.views.empty()) {
        const auto& v = model.views.front();
        const Vec3 forward = (v.target - v.eye).normalized();
        const Vec3 right = qrnmath::cross(forward, v.up);
        if (right.length() > 1e-6f) {
            defaultX = right.normalized();
            defaultY = qrnmath::cross(defaultX, forward).normalized();
        }
    }

    std::vector<Box> placed;
    for (std::size_t index = 0; index < model.pmi.size(); ++index) {
        Item& item = model.pmi[index];
        for (auto& text : item.texts) {
            if (index < first) { // laid out before: only in the way
                placed.push_back(boxOf(text, text.position));
                continue;
            }
            text.height = h;
            text.framed = item.kind == Item::TOLERANCE || item.kind == Item::DATUM;
            if (!item.hasPlane) {
                text.direction = defaultX;
                text.up = defaultY;
            }
            Vec3 x, y, normal;
            text.frame(x, y, normal);
            const Vec3 target = item.hasTarget ? item.target : text.position;
            Vec3 anchor = text.position;
            Vec3 away = y;
            if (!item.textPlaced) {
                // In the text's plane, beyond the model's box: the shortest way out, preferring
                // the way away from the model's middle, and not below (texts under a model are
                // hidden by it from the usual views).
                Vec3 out = target - centre;
                out = out - normal * out.dot(normal);
                out = out.length() > 1e-3f * diagonal ? out.normalized() : y;
                float best = std::numeric_limits<float>::max();
                for (int k = 0; k < 9; ++k) {
                    const float angle = 0.7853982f * static_cast<float>(k);
                    const Vec3 v = k == 8 ? out : x * std::cos(angle) + y * std::sin(angle);
                    const float cost = exitDistance(clear, target, v) -
                                       0.15f * diagonal * v.dot(out) +
                                       (v[2] < -0.1f ? diagonal : 0.0f);
                    if (cost < best) {
                        best = cost;
                        away = v;
                    }
                }
                anchor = target + away * (exitDistance(clear, target, away) + 0.02f * diagonal);
                text.align = away.dot(x) >= 0.0f ? qrnsg::Text::LEFT : qrnsg::Text::RIGHT;
            }
            if (!item.textPlaced) {
                // Stacked clear of the texts placed before, away from the model: up or down
                // its plane, else along it (a plane seen edge-on in a view hides moves up it).
                const Vec3 up = y * (away.dot(y) >= 0.0f ? 1.7f * h : -1.7f * h);
                const Vec3 along = x * (away.dot(x) >= 0.0f ? 1.7f * h : -1.7f * h);
                auto clear = [&](const Vec3& at) {
                    const Box candidate = boxOf(text, at);
                    return std::none_of(placed.begin(), placed.end(), [&](const Box& other) {
                        return overlaps(other, candidate) || coversOnScreen(other, candidate);
                    });
                };
                bool found = clear(anchor);
                for (int k = 1; k <= 40 && !found; ++k)
                    for (const Vec3& step : {up, along})
                        if (!found && clear(anchor + step * static_cast<float>(k))) {
                            anchor = anchor + step * static_cast<float>(k);
                            found = true;
                        }
                if (!found)
                    anchor = anchor + up * 40.0f;
                text.position = anchor;
            }
            placed.push_back(boxOf(text, text.position));
            if (item.hasTarget && target.distance(text.position) > h) {
                item.leaders.addStrip({text.position, target});
                mark(item, target, (text.position - target).normalized(), normal, h);
            }
        }
    }
}

} // namespace qrnimport
