#include "BenchModels.h"

#include "qrnimport/DemoAssembly.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/PmiLayout.h"
#include "qrnimport/Shapes.h"
#include "qrnmath/MatrixUtils.h"

#include <cmath>
#include <cstdio>

namespace qrnbench {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;

qrnimport::ModelData BenchModels::generatedAssembly(std::size_t minTriangles) {
    qrnimport::ModelData model;
    int colors[4] = {
        model.addMaterial(qrnsg::MMaterial::fromColor(0.7f, 0.7f, 0.75f)),
        model.addMaterial(qrnsg::MMaterial::fromColor(0.2f, 0.4f, 0.8f)),
        model.addMaterial(qrnsg::MMaterial::fromColor(0.8f, 0.3f, 0.2f)),
        model.addMaterial(qrnsg::MMaterial::fromColor(0.3f, 0.7f, 0.3f)),
    };
    // Four parts of a few thousand triangles each.
    for (int p = 0; p < 4; ++p) {
        qrnimport::ModelData::Part part;
        part.name = L"Part " + std::to_wstring(p);
        if (p % 2 == 0)
            part.meshes.push_back(qrnimport::Shapes::sphere(Vec3(), 4.0f, 48 + 8 * p, 64));
        else
            part.meshes.push_back(qrnimport::Shapes::cylinder(Vec3(), 3.0f, 8.0f, 512 * p));
        part.meshMaterials.push_back(colors[p]);
        part.edges = qrnimport::Shapes::cylinderEdges(Vec3(), 3.0f, 8.0f, 64);
        model.addPart(std::move(part));
    }
    int root = model.addNode(L"Generated", -1, MatrixUtils::identity());
    // Instances on a grid of sub-assemblies until the triangle budget is met.
    int row = -1;
    for (int i = 0; model.triangleCount() < minTriangles; ++i) {
        if (i % 16 == 0)
            row = model.addNode(L"Row " + std::to_wstring(i / 16), root,
                                MatrixUtils::translation(Vec3(0, 12.0f * float(i / 16), 0)));
        model.addNode(L"Instance " + std::to_wstring(i), row,
                      MatrixUtils::translation(Vec3(12.0f * float(i % 16), 0, 0)), i % 4);
    }
    return model;
}

std::string BenchModels::sharedModel(const std::string& name) {
    std::string path = std::string(QRN_SHARED_MODELS) + "/" + name;
    if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
        std::fclose(f);
        return path;
    }
    std::fprintf(stderr, "*** shared model %s not found: its benchmarks are skipped ***\n",
                 path.c_str());
    return {};
}

qrnimport::ModelData BenchModels::read(const std::string& path) {
    qrnimport::ModelData model;
    std::string error;
    if (!path.empty() && !qrnimport::ModelReader::read(path, model, error))
        std::fprintf(stderr, "cannot read %s: %s\n", path.c_str(), error.c_str());
    return model;
}

qrnimport::ModelData BenchModels::demo() {
    qrnimport::ModelData model;
    std::string error;
    if (!qrnimport::DemoAssembly::model(model, error))
        std::fprintf(stderr, "no demo assembly: %s\n", error.c_str());
    return model;
}

qrnimport::ModelData BenchModels::withPmi(std::size_t items) {
    using Item = qrnimport::ModelData::PmiItem;
    qrnimport::ModelData model = generatedAssembly(100000);
    const qrnsg::BBox box = model.bbox();
    const Vec3 size = box.max() - box.min();
    const wchar_t* const texts[] = {L"\u230012.5 \u00B10.1 mm",
                                    L"\u2316 | \u23000.2 \u24C2 | A | B",
                                    L"A",
                                    L"R4 +0.05/-0.02 mm",
                                    L"\u23E5 | 0.05",
                                    L"Note: deburr all edges"};
    for (std::size_t i = 0; i < items; ++i) {
        Item item;
        item.kind = static_cast<Item::Kind>(i % 4);
        item.name = L"Item " + std::to_wstring(i);
        // Targets spread over the assembly's top; every other item in a plane of its own.
        const float u = std::fmod(0.618034f * float(i), 1.0f);
        const float v = std::fmod(0.754878f * float(i), 1.0f);
        item.hasTarget = true;
        item.target = box.min() + Vec3(u * size[0], v * size[1], size[2]);
        item.hasPlane = i % 2 == 0;
        qrnsg::Text text;
        text.text = texts[i % 6];
        text.position = item.target;
        if (i % 4 == 2) { // upright, facing front
            text.direction = Vec3(1, 0, 0);
            text.up = Vec3(0, 0, 1);
        }
        item.texts.push_back(text);
        model.pmi.push_back(std::move(item));
    }
    qrnimport::PmiLayout::arrange(model);
    return model;
}

} // namespace qrnbench
