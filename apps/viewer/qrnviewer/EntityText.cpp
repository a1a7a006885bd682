#include "qrnviewer/EntityText.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnsgutils/InfoUtils.h"

#include <cmath>
#include <cstdio>

namespace qrnviewer {

using qrnsg::EntityNames;
using qrnsg::PartEntities;

namespace {

std::string format(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", v);
    return text;
}

// Lengths in the document's own unit.
struct Unit {
    std::string name;
    double scale = 1.0;
    explicit Unit(const std::shared_ptr<qrn::IDocument>& document) {
        auto info = qrn::component<qrnsg::SCInfo>(document, qrnsg::SCHEMA_INFO);
        const auto unit = info ? info->lengthUnit : qrnsg::SCInfo::MILLIMETRE;
        name = qrnplatform::Text::toUtf8(qrnsgutils::InfoUtils::getUnitName(unit));
        scale = info ? qrnsgutils::InfoUtils::toUnit(1.0, *info, unit) : 1.0;
    }
    std::string number(double v) const { return format(v * scale); }
    std::string operator()(double v) const { return number(v) + " " + name; }
};

std::string surface(const PartEntities::Surface& s, const Unit& unit) {
    switch (s.type) {
    case PartEntities::Surface::PLANE:
        return "planar face";
    case PartEntities::Surface::CYLINDER:
        return "cylindrical face, radius " + unit(s.radius);
    case PartEntities::Surface::CONE:
        return "conical face, half angle " + format(s.halfAngle * 180.0 / 3.14159265358979) +
               " deg";
    case PartEntities::Surface::SPHERE:
        return "spherical face, radius " + unit(s.radius);
    case PartEntities::Surface::TORUS:
        return "toroidal face, radii " + unit.number(s.radius) + " and " + unit(s.minorRadius);
    case PartEntities::Surface::OTHER:
        return "free-form face";
    default:
        return "mesh face"; // read from triangles: no surface known
    }
}

std::string curve(const PartEntities::Curve& c, const Unit& unit) {
    switch (c.type) {
    case PartEntities::Curve::LINE:
        return "straight edge, length " + unit(c.length);
    case PartEntities::Curve::CIRCLE:
        return "circular edge, radius " + unit(c.radius);
    case PartEntities::Curve::ARC:
        return "circular arc, radius " + unit(c.radius) + ", length " + unit(c.length);
    case PartEntities::Curve::OTHER:
        return "curved edge, length " + unit(c.length);
    default:
        return "mesh edge";
    }
}

// A PMI item by its kind and number among those of its kind, and what it says:
// "dimension 12: diameter 20 +0.1/-0.05 mm".
std::string pmiItem(const std::shared_ptr<qrn::IDocument>& document, int primitiveId) {
    auto pmi = std::dynamic_pointer_cast<qrnsg::SCPmi>(document->getSchema(qrnsg::SCHEMA_PMI));
    const int item = pmi ? pmi->itemOf(primitiveId) : -1;
    if (item < 0)
        return "PMI line " + std::to_string(primitiveId);
    static const char* const kinds[] = {"dimension", "tolerance", "datum", "note", "annotation"};
    const auto& it = pmi->items[static_cast<std::size_t>(item)];
    int number = 0;
    for (int i = 0; i <= item; ++i)
        number += pmi->items[static_cast<std::size_t>(i)].kind == it.kind ? 1 : 0;
    const std::wstring& says = it.description.empty() ? it.name : it.description;
    return std::string(kinds[it.kind]) + " " + std::to_string(number) +
           (says.empty() ? std::string() : ": " + qrnplatform::Text::toUtf8(says));
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
        return pmiItem(document, e.index);
    const auto* part = topology->partOf(e.node);
    if (!part)
        return "nothing";
    const auto& node = topology->nodes[static_cast<std::size_t>(e.node)];
    std::string owner = qrnplatform::Text::toUtf8(node.name);
    if (!part->name.empty() && part->name != node.name)
        owner += " (" + qrnplatform::Text::toUtf8(part->name) + ")";
    const Unit unit(document);
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
    const Unit unit(document);
    return "(" + unit.number(p[0]) + ", " + unit.number(p[1]) + ", " + unit.number(p[2]) + ") " +
           unit.name;
}

} // namespace qrnviewer
