#include "qrngl/section/PostClipRenderer.h"

#include "qrngl/FilterResult.h"
#include "qrngl/GL.h"
#include "qrngl/NamesInitializer.h"
#include "qrngl/PLMaterialRenderer.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCRenderer.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnsg/IPairVisitor.h"

#include <algorithm>

namespace qrngl {

namespace {

qrnsg::PLMaterial lineMaterial(const std::array<float, 4>& colour, float width) {
    qrnsg::PLMaterial material;
    material.color = qrnmath::Vec4(colour[0], colour[1], colour[2], colour[3]);
    material.width = width;
    return material;
}

} // namespace

PostClipRenderer::PostClipRenderer(std::shared_ptr<qrn::IDocument> document)
    : m_document(std::move(document)) {}

PostClipRenderer::~PostClipRenderer() = default;

void PostClipRenderer::setPlane(std::shared_ptr<IRenderer> quad) {
    m_quad = std::move(quad);
}

void PostClipRenderer::setPlaneBorder(std::shared_ptr<IRenderer> border) {
    m_border = std::move(border);
}

void PostClipRenderer::setProfile(std::shared_ptr<IRenderer> profile) {
    m_profile = std::move(profile);
}

template <class Draw>
void PostClipRenderer::forEachSegment(const SCClipping& clipping, Draw&& draw) {
    if (clipping.planeClipData.empty() || !clipping.planeClipData.front())
        return;
    for (const auto& node : clipping.planeClipData.front()->nodeClipData) {
        if (!node)
            continue;
        for (const auto& segment : node->segments) {
            const auto* arrays = node->segmentArrays.find(segment.first);
            if (!arrays || arrays->first < 0 || arrays->second < 0 ||
                static_cast<std::size_t>(arrays->first) >= node->vertexArrays.size() ||
                static_cast<std::size_t>(arrays->second) >= node->indexArrays.size())
                continue;
            const auto& vertices = node->vertexArrays[static_cast<std::size_t>(arrays->first)];
            const auto& indices = node->indexArrays[static_cast<std::size_t>(arrays->second)];
            const PrimitiveInfo& info = segment.second;
            if (info.start < 0 || info.count <= 0 ||
                static_cast<std::size_t>(info.start + info.count) > indices.size())
                continue;
            draw(segment.first, vertices, indices, info);
        }
    }
}

namespace {
void drawSegment(const std::vector<float>& vertices, const std::vector<std::int32_t>& indices,
                 const PrimitiveInfo& info) {
    glVertexPointer(3, GL_FLOAT, 0, vertices.data());
    glDrawElements(GL_LINES, info.count, GL_UNSIGNED_INT,
                   indices.data() + static_cast<std::size_t>(info.start));
}
} // namespace

void PostClipRenderer::render() const {
    auto clipping = qrn::component<SCClipping>(m_document.lock(), qrnsg::SCHEMA_CLIPPING);
    auto renderer = qrn::component<SCRenderer>(m_document.lock(), qrnsg::SCHEMA_RENDERER);
    if (!clipping || !renderer)
        return;
    const auto& settings = renderer->clip;
    // Lines and the plane in their own colours, unlit.
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    if (clipping->showProfile && !clipping->planeClipData.empty()) {
        glDisable(GL_CLIP_PLANE0);
        // Client arrays: the caller's arrays and buffer binding come back afterwards.
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        if (GLEW_VERSION_1_5)
            glBindBuffer(GL_ARRAY_BUFFER, 0);
        glEnableClientState(GL_VERTEX_ARRAY);
        // On the caps, which lie a little behind the plane.
        glPushAttrib(GL_DEPTH_BUFFER_BIT);
        glDepthFunc(GL_LEQUAL);
        const int selected = clipping->selectedProfile;
        if (selected >= 0) {
            PLMaterialRenderer apply(
                lineMaterial(settings.selectedProfileColour, settings.profileWidth));
            forEachSegment(*clipping, [&](int id, const auto& v, const auto& i, const auto& info) {
                if (id == selected)
                    drawSegment(v, i, info);
            });
        }
        {
            PLMaterialRenderer apply(lineMaterial(settings.profileColour, settings.profileWidth));
            forEachSegment(*clipping, [&](int id, const auto& v, const auto& i, const auto& info) {
                if (id != selected)
                    drawSegment(v, i, info);
            });
        }
        glPopAttrib();
        glPopClientAttrib();
    }
    render(*clipping, *renderer, true);
    glPopAttrib();
    // Overlays drawn later are not cut.
    glDisable(GL_CLIP_PLANE0);
}

void PostClipRenderer::render(const SCClipping& clipping, const SCRenderer& renderer,
                              bool plane) const {
    glDisable(GL_CLIP_PLANE0);
    if (!plane || !m_quad || !m_border || clipping.planes.empty())
        return;
    const auto& settings = renderer.clip;
    glPushMatrix();
    if (!clipping.planeMatrices.empty())
        glMultMatrixf(clipping.planeMatrices.front().data());
    {
        PLMaterialRenderer apply(lineMaterial(settings.planeBorderColour, 1.0f));
        m_border->render();
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    {
        // Over the model seen through it, not over the caps on it (drawn at the very same
        // depth), and hiding nothing drawn after it.
        glPushAttrib(GL_POLYGON_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.0f, 1.0f);
        glDepthFunc(GL_LESS);
        glDepthMask(GL_FALSE);
        PLMaterialRenderer apply(lineMaterial(
            renderer.planePicked ? settings.pickedPlaneColour : settings.planeColour, 1.0f));
        m_quad->render();
        glPopAttrib();
    }
    glDisable(GL_BLEND);
    glPopMatrix();
}

void PostClipRenderer::pick(std::shared_ptr<NamesInitializer> names,
                            std::shared_ptr<qrnsg::IPairVisitor> visitor) {
    auto clipping = qrn::component<SCClipping>(m_document.lock(), qrnsg::SCHEMA_CLIPPING);
    // A pick that does not look for tool drawables sees through the plane; the names stay
    // those of the last pass that drew it (a kept view is read with them).
    if (!clipping || !names || clipping->planes.empty() || !visitor ||
        !(visitor->entityType() & 32))
        return;
    m_planeName = 0;
    m_segmentNames.clear();
    const bool wasOn = qrnglutils::ClipplaneUtils::toggleClipPlaneState(false);
    glPushAttrib(GL_DEPTH_BUFFER_BIT | GL_LINE_BIT | GL_POINT_BIT | GL_VIEWPORT_BIT);
    if (clipping->showProfile) {
        // Wide, for easy hits.
        glLineWidth(20.0f);
        glPointSize(20.0f);
        // Client arrays: the caller's arrays and buffer binding come back afterwards.
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        if (GLEW_VERSION_1_5)
            glBindBuffer(GL_ARRAY_BUFFER, 0);
        glEnableClientState(GL_VERTEX_ARRAY);
        bool first = true;
        forEachSegment(*clipping, [&](int id, const auto& v, const auto& i, const auto& info) {
            const unsigned int name = names->take();
            if (first)
                clipping->firstProfileName = static_cast<std::int32_t>(name);
            first = false;
            m_segmentNames[name] = id;
            names->load(name);
            drawSegment(v, i, info);
        });
        glPopClientAttrib();
    }
    // After the segments: a hit on both at one depth (selection mode knows no offset) is
    // the segment's.
    if (m_quad && m_border) {
        m_planeName = names->take();
        names->load(m_planeName);
        glLineWidth(1.0f);
        glPushMatrix();
        if (!clipping->planeMatrices.empty())
            glMultMatrixf(clipping->planeMatrices.front().data());
        m_border->render();
        // Behind the caps of the id pass, which carry their parts' names, and behind the
        // segments on it: moved back in depth, as selection mode applies no polygon offset.
        glDepthRange(1e-5, 1.0);
        glDepthFunc(GL_LESS);
        m_quad->render();
        glPopMatrix();
    }
    glPopAttrib();
    qrnglutils::ClipplaneUtils::toggleClipPlaneState(wasOn);
}

void PostClipRenderer::choose(const FilterResult& result) const {
    auto clipping = qrn::component<SCClipping>(m_document.lock(), qrnsg::SCHEMA_CLIPPING);
    auto renderer = qrn::component<SCRenderer>(m_document.lock(), qrnsg::SCHEMA_RENDERER);
    if (!clipping || !renderer)
        return;
    const auto& names = result.names();
    renderer->planePicked =
        m_planeName != 0 && std::find(names.begin(), names.end(), m_planeName) != names.end();
    for (unsigned int name : names) {
        auto found = m_segmentNames.find(name);
        if (found != m_segmentNames.end()) {
            clipping->selectedProfile = found->second;
            break;
        }
    }
}

} // namespace qrngl
