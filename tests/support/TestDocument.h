#pragma once

#include "qrn/Document.h"
#include "qrngl/IOverlay.h"
#include "qrngl/IPostRenderer.h"
#include "qrngl/IPreRenderer.h"
#include "qrngl/IStripEntry.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qrntest {

// A document with the five components a frame reads, made through the real factory chain,
// and shortcuts that add primitives with their drawables.
class TestDocument {
public:
    TestDocument();
    // Closes the document: its components hold tools and canvases that hold it.
    ~TestDocument();
    TestDocument(const TestDocument&) = delete;
    TestDocument& operator=(const TestDocument&) = delete;

    // Adds a scene material and a mesh material index for it; returns the index.
    int addMeshMaterial(const qrnsg::MMaterial& material, bool transparentRecord);
    int addLineMaterial(const qrnsg::PLMaterial& material);
    // Adds a mesh with its drawable; returns the primitive id.
    int addMesh(const qrnsg::Mesh& mesh, int material);
    // Adds a primitive that draws an existing mesh drawable (an instance).
    int addMeshInstance(int drawable, int material, const qrnmath::Mat4& transform,
                        unsigned char extraFlags);
    int addPolyline(const qrnsg::Polyline& polyline, int material);
    // Adds a text record and its drawable.
    int addText(const qrnsg::Text& text, std::shared_ptr<qrngl::IStripEntry> entry, int material,
                unsigned char extraFlags);

    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrnsg::SCScene> scene;
    std::shared_ptr<qrnsg::SCSceneRT> rt;
    std::shared_ptr<qrnsg::SCPmi> pmi;
    std::shared_ptr<qrngl::SCRenderer> renderer;
    // Adds an axis-aligned box as a placed part with its entities, as an import makes one:
    // faces +x, -x, +y, -y, +z, -z (two triangles each, one mesh), twelve edges (the four of
    // -z, the four of +z, then the four along z), eight vertices (x fastest, then y, then z).
    // Adds the topology component on first use; returns the node.
    int addBoxPart(const std::wstring& name, const qrnmath::Vec3& centre, float half, int material);

    std::shared_ptr<qrngl::SCStripRenderer> strips;
    std::shared_ptr<qrnsg::SCSceneTopo> topology;

private:
    int m_nextId = 100; // ids unrelated to drawable indices, as in real documents
};

// An axis-aligned rectangle in the plane z, facing +z, with normals.
qrnsg::Mesh rectangle(float x0, float y0, float x1, float y1, float z = 0.0f);

// A strip entry that draws a filled square [0, size] x [0, size] in its own XY plane.
class SquareEntry : public qrngl::IStripEntry {
public:
    explicit SquareEntry(float size) : m_size(size) {}
    void render() const override;

private:
    float m_size;
};

// Fills the viewport with one colour through identity matrices, depth test off.
void fillViewport(const float rgb[3]);

// A renderer that runs a function: a single one, or a pre- or post-renderer of an order.
template <class Base = qrngl::IRenderer>
class FunctionRenderer : public Base {
public:
    explicit FunctionRenderer(std::function<void()> f, short order = 0)
        : m_f(std::move(f)), m_order(order) {}
    void render() const override { m_f(); }
    short order() const override { return m_order; }

private:
    std::function<void()> m_f;
    short m_order;
};

template <class Base = qrngl::IRenderer>
std::shared_ptr<Base> calling(std::function<void()> f, short order = 0) {
    return std::make_shared<FunctionRenderer<Base>>(std::move(f), order);
}

// The same as an overlay: drawn after the model and every renderer that is not one.
template <class Base = qrngl::IPostRenderer>
class OverlayFunctionRenderer : public FunctionRenderer<Base>, public qrngl::IOverlay {
    using FunctionRenderer<Base>::FunctionRenderer;
};

template <class Base = qrngl::IPostRenderer>
std::shared_ptr<Base> overlayCalling(std::function<void()> f, short order = 0) {
    return std::make_shared<OverlayFunctionRenderer<Base>>(std::move(f), order);
}

// Renderers that log their names, the pre- and post-renderers filling the viewport too.
using CallLog = std::vector<std::string>;

inline std::shared_ptr<qrngl::IRenderer> noting(std::shared_ptr<CallLog> log, std::string name) {
    return calling([log, name] { log->push_back(name); });
}

template <class Base>
std::shared_ptr<Base> filling(short order, std::string name, float r, float g, float b,
                              std::shared_ptr<CallLog> log) {
    return calling<Base>(
        [=] {
            log->push_back(name);
            const float rgb[3] = {r, g, b};
            fillViewport(rgb);
        },
        order);
}
constexpr auto preFill = filling<qrngl::IPreRenderer>;
constexpr auto postFill = filling<qrngl::IPostRenderer>;

} // namespace qrntest
