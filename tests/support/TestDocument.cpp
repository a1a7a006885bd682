#include "TestDocument.h"

#include "qrngl/GL.h"
#include "qrngl/SCGLFactory.h"
#include "qrngl/frame/SCRFactory.h"
#include "qrnglutils/MeshStripEntry.h"
#include "qrnglutils/PolylineStripEntry.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnsg/SCFactory.h"

namespace qrntest {

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

FillPreRenderer::FillPreRenderer(short order, std::string name, float r, float g, float b,
                                 std::shared_ptr<CallLog> log)
    : m_order(order), m_name(std::move(name)), m_color{r, g, b}, m_log(std::move(log)) {}

void FillPreRenderer::render() const {
    m_log->push_back(m_name);
    fillViewport(m_color);
}

FillPostRenderer::FillPostRenderer(short order, std::string name, float r, float g, float b,
                                   std::shared_ptr<CallLog> log)
    : m_order(order), m_name(std::move(name)), m_color{r, g, b}, m_log(std::move(log)) {}

void FillPostRenderer::render() const {
    m_log->push_back(m_name);
    fillViewport(m_color);
}

} // namespace qrntest
