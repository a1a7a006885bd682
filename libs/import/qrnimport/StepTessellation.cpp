#include "qrnimport/StepTessellation.h"

#include "qrnimport/OcctUtils.h"
#include "qrnmath/MatrixUtils.h"

#include <Interface_UndefinedContent.hxx>
#include <StepData_UndefinedEntity.hxx>
#include <StepVisual_CoordinatesList.hxx>
#include <TColgp_HArray1OfXYZ.hxx>

#include <cstdlib>
#include <cstring>

namespace qrnimport {

namespace {

using qrnmath::Vec3;

bool isType(const Handle(Standard_Transient) & e, const char* type) {
    Handle(StepData_UndefinedEntity) u = Handle(StepData_UndefinedEntity)::DownCast(e);
    return !u.IsNull() && !u->IsComplex() && std::strcmp(u->StepType(), type) == 0;
}

// The nested lists of a parameter: a list of lists of numbers.
std::vector<std::vector<double>> lists(const Handle(Interface_UndefinedContent) & c, int param) {
    std::vector<std::vector<double>> out;
    const auto outer =
        c->IsParamEntity(param) ? StepTessellation::content(c->ParamEntity(param)) : nullptr;
    for (int p = 1; !outer.IsNull() && p <= outer->NbParams(); ++p)
        if (outer->IsParamEntity(p))
            out.push_back(
                StepTessellation::numbers(StepTessellation::content(outer->ParamEntity(p))));
    return out;
}

// One triangulated face (TRIANGULATED_FACE or COMPLEX_TRIANGULATED_FACE: name, coordinates,
// pnmax, normals, geometric link, pnindex, then triangles, or strips and fans) into the mesh
// as one face. False when it holds no triangle.
bool addFace(const Handle(Standard_Transient) & entity, double scale, qrnsg::Mesh& mesh,
             qrnsg::PartEntities& entities) {
    const bool complex = isType(entity, "COMPLEX_TRIANGULATED_FACE");
    if (!complex && !isType(entity, "TRIANGULATED_FACE"))
        return false;
    const auto c = StepTessellation::content(entity);
    if (c->NbParams() < (complex ? 8 : 7) || !c->IsParamEntity(2))
        return false;
    const auto list = Handle(StepVisual_CoordinatesList)::DownCast(c->ParamEntity(2));
    if (list.IsNull() || list->Points().IsNull())
        return false;
    const auto& points = list->Points();
    const auto normals = lists(c, 4);
    std::vector<double> pnindex =
        c->IsParamEntity(6)
            ? StepTessellation::numbers(StepTessellation::content(c->ParamEntity(6)))
            : std::vector<double>();
    // The face's own vertices, by their place in pnindex (or in the list without one).
    const std::size_t count =
        pnindex.empty() ? static_cast<std::size_t>(points->Length()) : pnindex.size();
    const auto first = static_cast<unsigned int>(mesh.vertices.size());
    for (std::size_t v = 0; v < count; ++v) {
        const int at =
            pnindex.empty() ? points->Lower() + static_cast<int>(v) : static_cast<int>(pnindex[v]);
        if (at < points->Lower() || at > points->Upper())
            return false;
        mesh.vertices.push_back(OcctUtils::toVec3(points->Value(at) * scale));
        const auto& n = normals.size() == count ? normals[v]
                        : normals.size() == 1   ? normals[0]
                                                : std::vector<double>();
        mesh.normals.push_back(
            n.size() == 3
                ? Vec3(static_cast<float>(n[0]), static_cast<float>(n[1]), static_cast<float>(n[2]))
                : Vec3());
    }
    const std::size_t before = mesh.indices.size();
    // Triangles name their points by their place in pnindex (from 1).
    StepTessellation::triangles(c, complex ? 7 : 0, complex ? 8 : 7, [&](int i, int j, int k) {
        const auto n = static_cast<int>(count);
        if (i < 1 || j < 1 || k < 1 || i > n || j > n || k > n)
            return;
        mesh.indices.insert(mesh.indices.end(), {first + static_cast<unsigned int>(i - 1),
                                                 first + static_cast<unsigned int>(j - 1),
                                                 first + static_cast<unsigned int>(k - 1)});
    });
    if (mesh.indices.size() == before) {
        mesh.vertices.resize(first);
        mesh.normals.resize(first);
        return false;
    }
    // Where the file gives no normal, the face's first triangle does.
    const Vec3& p0 = mesh.vertices[mesh.indices[before]];
    const Vec3 flat = qrnmath::cross(mesh.vertices[mesh.indices[before + 1]] - p0,
                                     mesh.vertices[mesh.indices[before + 2]] - p0)
                          .normalized();
    for (std::size_t v = first; v < mesh.normals.size(); ++v)
        if (mesh.normals[v].lengthSquared() < 1e-12f)
            mesh.normals[v] = flat;
    qrnsg::PartEntities::Face face;
    face.firstTriangle = static_cast<unsigned int>(before / 3);
    face.triangleCount = static_cast<unsigned int>((mesh.indices.size() - before) / 3);
    entities.faces.push_back(face);
    return true;
}

} // namespace

Handle(Interface_UndefinedContent) StepTessellation::content(const Handle(Standard_Transient) & e) {
    Handle(StepData_UndefinedEntity) u = Handle(StepData_UndefinedEntity)::DownCast(e);
    return u.IsNull() ? Handle(Interface_UndefinedContent)() : u->UndefinedContent();
}

std::vector<double> StepTessellation::numbers(const Handle(Interface_UndefinedContent) & list) {
    std::vector<double> out;
    for (int p = 1; !list.IsNull() && p <= list->NbParams(); ++p)
        if (!list->IsParamEntity(p) && !list->ParamValue(p).IsNull())
            out.push_back(std::atof(list->ParamValue(p)->ToCString()));
    return out;
}

void StepTessellation::triangles(const Handle(Interface_UndefinedContent) & entity, int strips,
                                 int fans, const std::function<void(int, int, int)>& each) {
    auto emit = [&](int i, int j, int k) {
        if (i != j && j != k && i != k)
            each(i, j, k);
    };
    for (const int param : {strips, fans}) {
        if (param <= 0 || entity->NbParams() < param || !entity->IsParamEntity(param))
            continue;
        const auto outer = content(entity->ParamEntity(param));
        for (int l = 1; !outer.IsNull() && l <= outer->NbParams(); ++l) {
            if (!outer->IsParamEntity(l))
                continue;
            std::vector<int> s;
            for (double v : numbers(content(outer->ParamEntity(l))))
                s.push_back(static_cast<int>(v));
            for (std::size_t t = 2; t < s.size(); ++t) {
                if (param == fans)
                    emit(s[0], s[t - 1], s[t]);
                else if (t % 2 == 0)
                    emit(s[t - 2], s[t - 1], s[t]);
                else
                    emit(s[t - 1], s[t - 2], s[t]);
            }
        }
    }
}

int StepTessellation::addParts(const Handle(StepData_StepModel) & step, double scale,
                               ModelData& model) {
    if (step.IsNull())
        return 0;
    std::vector<Handle(Standard_Transient)> solids, shells;
    for (int i = 1; i <= step->NbEntities(); ++i) {
        const auto& e = step->Value(i);
        if (isType(e, "TESSELLATED_SOLID"))
            solids.push_back(e);
        else if (isType(e, "TESSELLATED_SHELL"))
            shells.push_back(e);
    }
    int material = -1;
    int added = 0;
    for (const auto& body : solids.empty() ? shells : solids) {
        const auto c = StepTessellation::content(body);
        if (c->NbParams() < 2 || !c->IsParamEntity(2))
            continue;
        const auto items = StepTessellation::content(c->ParamEntity(2));
        ModelData::Part part;
        part.name =
            c->ParamValue(1).IsNull() ? std::wstring() : OcctUtils::toWide(c->ParamValue(1));
        // The reader keeps the quotes of a text it does not know the place of.
        if (part.name.size() >= 2 && part.name.front() == L'\'' && part.name.back() == L'\'')
            part.name = part.name.substr(1, part.name.size() - 2);
        qrnsg::Mesh mesh;
        for (int p = 1; !items.IsNull() && p <= items->NbParams(); ++p)
            if (items->IsParamEntity(p))
                addFace(items->ParamEntity(p), scale, mesh, part.entities);
        if (mesh.indices.empty())
            continue;
        if (material < 0)
            material = model.addMaterial(qrnsg::MMaterial::fromColor(0.72f, 0.74f, 0.78f));
        part.meshes.push_back(std::move(mesh));
        part.meshMaterials.push_back(material);
        const std::wstring name = part.name;
        const int index = model.addPart(std::move(part));
        model.addNode(name, -1, qrnmath::MatrixUtils::identity(), index);
        ++added;
    }
    return added;
}

} // namespace qrnimport
