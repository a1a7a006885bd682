#include "qrnviewer/BuiltinScene.h"

#include "qrnmath/MatrixUtils.h"
#include "qrnviewer/Shapes.h"

namespace qrnviewer {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;

ModelData BuiltinScene::make() {
    ModelData model;
    int grey = model.addMaterial(qrnsg::MMaterial::fromColor(0.62f, 0.64f, 0.68f));
    int blue = model.addMaterial(qrnsg::MMaterial::fromColor(0.15f, 0.35f, 0.85f));
    int red = model.addMaterial(qrnsg::MMaterial::fromColor(0.85f, 0.2f, 0.15f));
    int glass = model.addMaterial(qrnsg::MMaterial::fromColor(0.3f, 0.8f, 0.6f, 0.6f));

    auto part = [&](const std::wstring& name, qrnsg::Mesh mesh, qrnsg::Polyline edges,
                    int material) {
        ModelData::Part p;
        p.name = name;
        p.meshes.push_back(std::move(mesh));
        p.meshMaterials.push_back(material);
        p.edges = std::move(edges);
        return model.addPart(std::move(p));
    };
    int plate = part(L"Plate", Shapes::box(Vec3(0, 0, 0), Vec3(100, 60, 8)),
                     Shapes::boxEdges(Vec3(0, 0, 0), Vec3(100, 60, 8)), grey);
    int pin = part(L"Pin", Shapes::cylinder(Vec3(0, 0, 0), 6, 30, 48),
                   Shapes::cylinderEdges(Vec3(0, 0, 0), 6, 30, 48), blue);
    int block = part(L"Block", Shapes::box(Vec3(0, 0, 0), Vec3(30, 25, 20)),
                     Shapes::boxEdges(Vec3(0, 0, 0), Vec3(30, 25, 20)), red);
    int cover = part(L"Cover", Shapes::box(Vec3(0, 0, 0), Vec3(40, 40, 3)),
                     Shapes::boxEdges(Vec3(0, 0, 0), Vec3(40, 40, 3)), glass);

    int root = model.addNode(L"Fixture", -1, MatrixUtils::identity());
    model.addNode(L"Plate", root, MatrixUtils::identity(), plate);
    int pins = model.addNode(L"Pins", root, MatrixUtils::translation(Vec3(0, 0, 8)));
    model.addNode(L"Pin:1", pins, MatrixUtils::translation(Vec3(15, 15, 0)), pin);
    model.addNode(L"Pin:2", pins, MatrixUtils::translation(Vec3(15, 45, 0)), pin);
    model.addNode(L"Block", root, MatrixUtils::translation(Vec3(60, 10, 8)), block);
    model.addNode(L"Cover", root, MatrixUtils::translation(Vec3(50, 12, 40)), cover);
    return model;
}

} // namespace qrnviewer
