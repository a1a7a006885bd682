#include "TestDocument.h"

#include "qrngl/GL.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/frame/SCRFactory.h"
#include "qrnglutils/MeshStripEntry.h"
#include "qrnglutils/PolylineStripEntry.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCFactory.h"

namespace qrntest {

TestDocument::~TestDocument() {
    if (document)
        document->close();
}

TestDocument::TestDocument() {
    auto chain = qrnglr::createFactory(
        std::make_shared<qrngl::SCGLFactory>(std::make_shared<qrnsg::SCFactory>()));
    document = std::make_shared<qrn::Document>(chain);
    scene = std::dynamic_pointer_cast<qrnsg::SCScene>(document->addSchema(qrnsg::SCHEMA_SCENE));
    rt = std::dynamic_pointer_cast<qrnsg::SCSceneRT>(document->addSchema(qrnsg::SCHEMA_SCENE_RT));
    pmi = std::dynamic_pointer_cast<qrnsg::SCPmi>(document->addSchema(qrnsg::SCHEMA_PMI));
    renderer =
        std::dynamic_pointer_cast<qrngl::SCRenderer>(document->addSchema(qrnsg::SCHEMA_RENDERER));
    strips = std::dynamic_pointer_cast<qrngl::SCStripRenderer>(
        document->addSchema(qrnsg::SCHEMA_STRIP_RENDERER));
    renderer->setReady(true);
}

int TestDocument::addMeshMaterial(const qrnsg::MMaterial& material, bool transparentRecord) {
    scene->materials.push_back(material);
    return rt->addMeshMaterial(static_cast<int>(scene->materials.size()) - 1, transparentRecord);
}

int TestDocument::addLineMaterial(const qrnsg::PLMaterial& material) {
    scene->plMaterials.push_back(material);
    return static_cast<int>(scene->plMaterials.size()) - 1;
}

int TestDocument::addMesh(const qrnsg::Mesh& mesh, int material) {
    scene->meshes.push_back(mesh);
    strips->meshes.push_back(std::make_shared<qrnglutils::MeshStripEntry>(mesh));
    return addMeshInstance(static_cast<int>(strips->meshes.size()) - 1, material,
                           qrnmath::MatrixUtils::identity(), 0);
}

int TestDocument::addMeshInstance(int drawable, int material, const qrnmath::Mat4& transform,
                                  unsigned char extraFlags) {
    int id = m_nextId++;
    rt->meshes.add(id, drawable, material, extraFlags);
    rt->meshes.transforms.find(id)->first = transform;
    return id;
}

int TestDocument::addPolyline(const qrnsg::Polyline& polyline, int material) {
    scene->polylines.push_back(polyline);
    strips->polylines.push_back(std::make_shared<qrnglutils::PolylineStripEntry>(polyline));
    int id = m_nextId++;
    rt->polylines.add(id, static_cast<int>(strips->polylines.size()) - 1, material);
    return id;
}

int TestDocument::addText(const qrnsg::Text& text, std::shared_ptr<qrngl::IStripEntry> entry,
                          int material, unsigned char extraFlags) {
    scene->texts.push_back(text);
    strips->texts.push_back(std::move(entry));
    int id = m_nextId++;
    rt->texts.add(id, static_cast<int>(strips->texts.size()) - 1, material, extraFlags);
    return id;
}

int TestDocument::addBoxPart(const std::wstring& name, const qrnmath::Vec3& c, float h,
                             int material) {
    using qrnmath::Vec3;
    if (!topology)
        topology = std::dynamic_pointer_cast<qrnsg::SCSceneTopo>(
            document->addSchema(qrnsg::SCHEMA_SCENE_TOPO));
    qrnsg::SCSceneTopo::Part part;
    part.name = name;
    auto corner = [&](int i) {
        return Vec3(c[0] + ((i & 1) ? h : -h), c[1] + ((i & 2) ? h : -h),
                    c[2] + ((i & 4) ? h : -h));
    };
    for (int i = 0; i < 8; ++i)
        part.entities.vertices.push_back(corner(i));
    // Corners of each face, counter-clockwise seen from outside.
    const int faces[6][4] = {{1, 3, 7, 5}, {0, 4, 6, 2}, {2, 6, 7, 3},
                             {0, 1, 5, 4}, {4, 5, 7, 6}, {0, 2, 3, 1}};
    const Vec3 normals[6] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    qrnsg::Mesh mesh;
    mesh.closed = true;
    for (int f = 0; f < 6; ++f) {
        const auto base = static_cast<unsigned int>(mesh.vertices.size());
        for (int k = 0; k < 4; ++k) {
            mesh.vertices.push_back(corner(faces[f][k]));
            mesh.normals.push_back(normals[f]);
        }
        mesh.indices.insert(mesh.indices.end(),
                            {base, base + 1, base + 2, base, base + 2, base + 3});
        qrnsg::PartEntities::Face face;
        face.firstTriangle = static_cast<unsigned int>(2 * f);
        face.triangleCount = 2;
        face.surface.type = qrnsg::PartEntities::Surface::PLANE;
        face.surface.origin = corner(faces[f][0]);
        face.surface.axis = normals[f];
        part.entities.faces.push_back(face);
    }
    const int edges[12][2] = {{0, 1}, {1, 3}, {3, 2}, {2, 0}, {4, 5}, {5, 7},
                              {7, 6}, {6, 4}, {0, 4}, {1, 5}, {3, 7}, {2, 6}};
    qrnsg::Polyline lines;
    for (int e = 0; e < 12; ++e) {
        lines.addStrip({corner(edges[e][0]), corner(edges[e][1])});
        qrnsg::PartEntities::Edge edge;
        edge.strip = static_cast<unsigned int>(e);
        edge.curve.type = qrnsg::PartEntities::Curve::LINE;
        edge.vertices[0] = edges[e][0];
        edge.vertices[1] = edges[e][1];
        part.entities.edges.push_back(edge);
    }
    qrnsg::PointSet points;
    points.points = part.entities.vertices;

    qrnsg::SCSceneTopo::Node node;
    node.name = name;
    node.part = static_cast<int>(topology->parts.size());
    part.meshes.push_back(static_cast<int>(scene->meshes.size()));
    node.meshIds.push_back(addMesh(mesh, material));
    part.polyline = static_cast<int>(scene->polylines.size());
    node.polylineIds.push_back(addPolyline(lines, 0));
    part.points = static_cast<int>(scene->points.size());
    scene->points.push_back(points);
    strips->points.push_back(std::make_shared<qrnglutils::PolylineStripEntry>(points));
    const int pointsId = m_nextId++;
    rt->points.add(pointsId, part.points, 0);
    node.pointIds.push_back(pointsId);
    topology->parts.push_back(part);
    topology->nodes.push_back(node);
    topology->index();
    return static_cast<int>(topology->nodes.size()) - 1;
}

qrnsg::Mesh rectangle(float x0, float y0, float x1, float y1, float z) {
    qrnsg::Mesh m;
    m.vertices = {{x0, y0, z}, {x1, y0, z}, {x1, y1, z}, {x0, y1, z}};
    m.normals.assign(4, qrnmath::Vec3(0.0f, 0.0f, 1.0f));
    m.indices = {0, 1, 2, 0, 2, 3};
    return m;
}

void SquareEntry::render() const {
    glBegin(GL_QUADS);
    glNormal3f(0.0f, 0.0f, 1.0f);
    glVertex3f(0.0f, 0.0f, 0.0f);
    glVertex3f(m_size, 0.0f, 0.0f);
    glVertex3f(m_size, m_size, 0.0f);
    glVertex3f(0.0f, m_size, 0.0f);
    glEnd();
}

void fillViewport(const float rgb[3]) {
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_LIGHTING);
    glColor3fv(rgb);
    glRectf(-1.0f, -1.0f, 1.0f, 1.0f);
    glPopAttrib();
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

} // namespace qrntest
