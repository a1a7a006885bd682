#include "qrnviewer/EntityText.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"

#include <cmath>
#include <cstdio>

namespace qrnviewer {

using qrnsg::EntityNames;
using qrnsg::PartEntities;

namespace {

std::string number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", v);
    return text;
}

const char* unitName(const std::shared_ptr<qrn::IDocument>& document) {
    static const char* const names[] = {"mm", "cm", "m", "in", "ft", "um", "km", "mi"};
    auto info = std::dynamic_pointer_cast<qrnsg::SCInfo>(document->getSchema(qrnsg::SCHEMA_INFO));
    const int unit = info ? info->lengthUnit : 0;
    return unit >= 0 && unit < 8 ? names[unit] : "mm";
}

std::string surface(const PartEntities::Surface& s, const std::string& unit) {
    switch (s.type) {
    case PartEntities::Surface::PLANE:
        return "planar face";
    case PartEntities::Surface::CYLINDER:
        return "cylindrical face, radius " + number(s.radius) + " " + unit;
    case PartEntities::Surface::CONE:
        return "conical face, half angle " + number(s.halfAngle * 180.0 / 3.14159265358979) +
               " deg";
    case PartEntities::Surface::SPHERE:
        return "spherical face, radius " + number(s.radius) + " " + unit;
    case PartEntities::Surface::TORUS:
        return "toroidal face, radii " + number(s.radius) + " and " + number(s.minorRadius) + " " +
               unit;
    case PartEntities::Surface::OTHER:
        return "free-form face";
    default:
        return "mesh face"; // read from triangles: no surface known
    }
}

std::string curve(const PartEntities::Curve& c, const std::string& unit) {
    switch (c.type) {
    case PartEntities::Curve::LINE:
        return "straight edge, length " + number(c.length) + " " + unit;
    case PartEntities::Curve::CIRCLE:
        return "circular edge, radius " + number(c.radius) + " " + unit;
    case PartEntities::Curve::ARC:
        return "circular arc, radius " + number(c.radius) + " " + unit + ", length " +
               number(c.length) + " " + unit;
    case PartEntities::Curve::OTHER:
        return "curved edge, length " + number(c.length) + " " + unit;
    default:
        return "mesh edge";
    }
}

} // namespace

std::string EntityText::describe(const std::shared_ptr<qrn::IDocument>& document,
                                 unsigned int name) {
    auto topology = document ? std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
                                   document->getSchema(qrnsg::SCHEMA_SCENE_TOPO))
                             : nullptr;
    if (!topology || name == 0)
        return "nothing";
    const EntityNames::Entity e = topology->resolve(name);
    if (e.kind == EntityNames::EDGE_LIKE)
        return "PMI line " + std::to_string(e.index);
    const auto* part = topology->partOf(e.node);
    if (!part)
        return "nothing";
    const auto& node = topology->nodes[static_cast<std::size_t>(e.node)];
    std::string owner = qrnplatform::Text::toUtf8(node.name);
    if (!part->name.empty() && part->name != node.name)
        owner += " (" + qrnplatform::Text::toUtf8(part->name) + ")";
    const std::string unit = unitName(document);
    const auto at = static_cast<std::size_t>(e.index);
    switch (e.kind) {
    case EntityNames::PART:
        return "part " + owner + ": " + std::to_string(part->entities.faces.size()) + " faces, " +
               std::to_string(part->entities.edges.size()) + " edges";
    case EntityNames::FACE:
        return "face " + std::to_string(e.index) + " of " + owner + ": " +
               surface(part->entities.faces[at].surface, unit);
    case EntityNames::EDGE:
        return "edge " + std::to_string(e.index) + " of " + owner + ": " +
               curve(part->entities.edges[at].curve, unit);
    case EntityNames::POINT: {
        // In the model's coordinates: where the placed vertex is.
        qrnmath::Vec3 p = part->entities.vertices[at];
        auto rt = std::dynamic_pointer_cast<qrnsg::SCSceneRT>(
            document->getSchema(qrnsg::SCHEMA_SCENE_RT));
        if (rt && !node.pointIds.empty())
            if (const auto* pair = rt->points.transforms.find(node.pointIds.front()))
                p = qrnmath::MatrixUtils::transformPoint(pair->first, p);
        return "vertex " + std::to_string(e.index) + " of " + owner + ": at " + point(document, p);
    }
    default:
        return "nothing";
    }
}

std::string EntityText::point(const std::shared_ptr<qrn::IDocument>& document,
                              const qrnmath::Vec3& p) {
    return "(" + number(p[0]) + ", " + number(p[1]) + ", " + number(p[2]) + ") " +
           unitName(document);
}

} // namespace qrnviewer
