#pragma once

#include "qrn/IDocument.h"
#include "qrn/IState.h"
#include "qrngl/Camera.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/SCClipping.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Ray.h"
#include "qrnmath/Tuple.h"
#include "qrnsg/BBox.h"
#include "qrnsg/Mesh.h"
#include "qrnsg/PartEntities.h"
#include "qrnsg/Polyline.h"
#include "qrnsgutils/EntityMeasure.h"

#include <memory>
#include <vector>

namespace qrnsg {
class SCScene;
class SCSceneRes;
class SCSceneRT;
class SCSceneTopo;
struct RTState;
} // namespace qrnsg

namespace qrngl {

// Where the named entities of a document lie in the world, and which placed parts they belong
// to: what the view commands and the measuring tools need of faces, edges, vertices and parts.
class QRNGL_EXPORT EntityGeometry {
public:
    explicit EntityGeometry(const std::shared_ptr<qrn::IDocument>& document);
    // False without the topology and run-time components.
    bool ready() const { return m_topology && m_rt; }

    // The world box of the entities, shown or not; names that name nothing add nothing.
    qrnsg::BBox bounds(const std::vector<unsigned int>& names) const;
    // The world normal of a planar face, outward as the part gives it.
    bool planeNormal(unsigned int face, qrnmath::Vec3& normal) const;
    // Where the ray meets a face, at ray parameter t. A ray that passes beside the face (a
    // pick takes the nearest pixel of it) meets the plane of its nearest triangle.
    bool intersect(unsigned int face, const qrnmath::Ray& ray, float& t) const;

    // The world geometry of a face, edge or vertex: its analytic description placed where the
    // named instance is (a scaled placement scales radii and lengths) and its tessellation.
    // Kind NONE for any other name.
    qrnsgutils::WorldEntity entity(unsigned int name) const;
    // Where a ray meets an entity: a face where it crosses it (or the plane of its triangle
    // nearest the ray), an edge at its point nearest the ray, a vertex at itself; normal: the
    // face's there, or against the ray for the others.
    bool pointOn(unsigned int name, const qrnmath::Ray& ray, qrnmath::Vec3& point,
                 qrnmath::Vec3& normal) const;
    // The entity of the mask under a window point, snapping as a user expects (a vertex before
    // an edge before a face within size pixels), and where the ray through the point meets it;
    // a cut part's cap is met on the clip plane (name: the part's).
    bool pointUnder(const std::shared_ptr<IPickCanvas>& canvas,
                    const std::shared_ptr<Camera>& camera, int x, int y, unsigned short mask,
                    int size, unsigned int& name, qrnmath::Vec3& point,
                    qrnmath::Vec3& normal) const;
    // The ray from the eye through a window point (origin top left).
    static qrnmath::Ray rayAt(const std::shared_ptr<Camera>& camera, int x, int y);

    // Per node: whether it is a placed part named by one of the entities, or lies below an
    // assembly that is.
    std::vector<bool> partsOf(const std::vector<unsigned int>& names) const;
    // Per node: set for every node that places a part.
    std::vector<bool> allParts() const;
    // Shows or hides the primitives of the marked nodes; true when anything changed.
    bool setShown(const std::vector<bool>& nodes, bool shown) const;
    // Shows the marked nodes and hides every other part; true when anything changed.
    bool showOnly(const std::vector<bool>& nodes) const;

private:
    struct Placed {
        int drawable = -1;
        qrnmath::Mat4 transform;
    };
    bool place(const qrnsg::RTState& state, int id, Placed& placed) const;
    void addNode(int node, qrnsg::BBox& box) const;
    void addEntity(unsigned int name, qrnsg::BBox& box) const;
    // A face name's face and the primitive id of the mesh that holds it; null for another name.
    const qrnsg::PartEntities::Face* faceOf(unsigned int face, const int** meshId) const;
    // The world triangles of a face, three corners each.
    bool faceTriangles(unsigned int face, std::vector<qrnmath::Vec3>& corners) const;
    // The world points of an edge in order, and the placement they came by.
    bool edgePoints(unsigned int edge, std::vector<qrnmath::Vec3>& points,
                    qrnmath::Mat4* placement = nullptr) const;
    // A vertex's world point.
    bool vertexPoint(unsigned int vertex, qrnmath::Vec3& point) const;
    bool setNodeShown(int node, bool shown) const;

    std::shared_ptr<qrnsg::SCScene> m_scene;
    std::shared_ptr<qrnsg::SCSceneRes> m_resources;
    std::shared_ptr<qrnsg::SCSceneRT> m_rt;
    std::shared_ptr<qrnsg::SCSceneTopo> m_topology;
    std::shared_ptr<SCClipping> m_clipping;
    const std::vector<qrnsg::Mesh>* m_meshes = nullptr;
    const std::vector<qrnsg::Polyline>* m_polylines = nullptr;
};

// The shown state of every placed part, as an undo record: restoring it shows what was shown
// and tells the renderer's pick canvas and canvases.
class QRNGL_EXPORT PartVisibility : public qrn::IState {
public:
    explicit PartVisibility(const std::shared_ptr<qrn::IDocument>& document);
    void restore() override;

private:
    struct Entry {
        int kind; // 0 meshes, 1 polylines, 2 points
        int id;
        bool shown;
    };
    std::weak_ptr<qrn::IDocument> m_document;
    std::vector<Entry> m_entries;
};

// After a change of what is shown: the pick canvas draws afresh and the canvases repaint.
QRNGL_EXPORT void visibilityChanged(const std::shared_ptr<qrn::IDocument>& document);

} // namespace qrngl
