#include "qrnimport/ModelData.h"

#include "qrnmath/MatrixUtils.h"

namespace qrnimport {

using qrnmath::MatrixUtils;

qrnsg::BBox ModelData::Part::bbox() const {
    qrnsg::BBox b;
    for (const auto& m : meshes)
        b.add(m.bbox());
    b.add(edges.bbox());
    return b;
}

int ModelData::addMaterial(const qrnsg::MMaterial& m) {
    materials.push_back(m);
    return static_cast<int>(materials.size()) - 1;
}

int ModelData::addPart(Part part) {
    parts.push_back(std::move(part));
    return static_cast<int>(parts.size()) - 1;
}

int ModelData::addNode(const std::wstring& name, int parent, const qrnmath::Mat4& local, int part) {
    Node n;
    n.name = name;
    n.parent = parent;
    n.local = local;
    n.part = part;
    nodes.push_back(n);
    return static_cast<int>(nodes.size()) - 1;
}

qrnmath::Mat4 ModelData::worldTransform(int node) const {
    qrnmath::Mat4 m = MatrixUtils::identity();
    for (int n = node; n >= 0; n = nodes[static_cast<std::size_t>(n)].parent)
        m = MatrixUtils::multiply(nodes[static_cast<std::size_t>(n)].local, m);
    return m;
}

qrnsg::BBox ModelData::extent() const {
    qrnsg::BBox box = bbox();
    for (const auto& item : pmi) {
        box.add(item.lines.bbox());
        box.add(item.leaders.bbox());
        for (const auto& t : item.texts)
            box.add(t.bbox());
    }
    return box;
}

qrnsg::BBox ModelData::bbox() const {
    qrnsg::BBox box;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].part < 0)
            continue;
        qrnsg::BBox local = parts[static_cast<std::size_t>(nodes[i].part)].bbox();
        if (local.isEmpty())
            continue;
        qrnmath::Mat4 m = worldTransform(static_cast<int>(i));
        const auto& lo = local.min();
        const auto& hi = local.max();
        for (int c = 0; c < 8; ++c)
            box.add(MatrixUtils::transformPoint(m, qrnmath::Vec3(c & 1 ? hi[0] : lo[0],
                                                                 c & 2 ? hi[1] : lo[1],
                                                                 c & 4 ? hi[2] : lo[2])));
    }
    return box;
}

std::size_t ModelData::triangleCount() const {
    std::size_t n = 0;
    for (const auto& node : nodes)
        if (node.part >= 0)
            for (const auto& m : parts[static_cast<std::size_t>(node.part)].meshes)
                n += m.triangleCount();
    return n;
}

std::size_t ModelData::instanceCount() const {
    std::size_t n = 0;
    for (const auto& node : nodes)
        n += node.part >= 0 ? 1 : 0;
    return n;
}

} // namespace qrnimport
