#include "qrngl/measure/MeasureRenderer.h"

#include "qrngl/FilterResult.h"
#include "qrngl/GL.h"
#include "qrngl/IRenderer.h"
#include "qrngl/NamesInitializer.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/ScreenDensity.h"
#include "qrngl/overlays/PixelSpace.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnglutils/MarkupUtils.h"
#include "qrnglutils/MeasureUtils.h"
#include "qrnsg/IPairVisitor.h"
#include "qrnsg/SCTempGraphics.h"

#include <algorithm>

namespace qrngl {

using qrnmath::Vec3;

namespace {

// A world point in window pixels from the viewport's lower left, as the labels are drawn.
Vec3 toPixels(const std::shared_ptr<Camera>& camera, const Vec3& world) {
    const Vec3 p = qrnglutils::MeasureUtils::screenPoint(camera, world);
    return Vec3(p[0], static_cast<float>(camera->viewportHeight()) - p[1], p[2]);
}

} // namespace

MeasureRenderer::MeasureRenderer(std::shared_ptr<qrn::IDocument> document,
                                 std::shared_ptr<IRendererFactory> factory)
    : m_document(document), m_factory(std::move(factory)) {
    m_frame.color = qrnmath::Vec4(0.0f, 0.0f, 0.0f, 0.6f);
    m_frame.width = 1.0f;
    m_frame.stipple = false;
    m_background.ambient = m_background.diffuse = qrnmath::Vec4(1.0f, 1.0f, 1.0f, 0.5f);
}

MeasureRenderer::~MeasureRenderer() = default;

const Font* MeasureRenderer::font() const {
    if (!m_fontTried) {
        m_fontTried = true;
        m_font = Font::createLabel(ScreenDensity::current());
    }
    return m_font.get();
}

std::vector<MeasureRenderer::Label> MeasureRenderer::labels() const {
    std::vector<Label> out;
    if (m_measure) {
        out.push_back({*m_measure, 0, false, false});
        return out;
    }
    auto document = m_document.lock();
    if (auto temp = qrn::component<qrnsg::SCTempGraphics>(document, qrnsg::SCHEMA_TEMP_GRAPHICS))
        for (const auto& entry : temp->measures)
            if (entry.second)
                out.push_back({*entry.second, 0, false, false});
    if (auto measure = qrn::component<SCMeasure>(document, qrnsg::SCHEMA_MEASURE))
        for (const auto& entry : measure->records) {
            const auto& record = entry.second;
            if (!record || record->text.empty())
                continue;
            Label label;
            label.measure.kind = qrnsg::Measure::DISTANCE;
            label.measure.text = record->text;
            label.measure.anchor = record->anchor;
            label.measure.points = record->points;
            label.record = entry.first;
            label.strip = true;
            label.selected = std::any_of(
                measure->selected.begin(), measure->selected.end(),
                [&](const std::shared_ptr<MeasureRT>& r) { return r && r->id == entry.first; });
            out.push_back(std::move(label));
        }
    return out;
}

void MeasureRenderer::render() const {
    auto document = m_document.lock();
    auto renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->camera)
        return;
    const std::vector<Label> all = labels();
    if (all.empty())
        return;
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LINE_BIT | GL_POINT_BIT | GL_COLOR_BUFFER_BIT |
                 GL_DEPTH_BUFFER_BIT);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    // Measurements stay whole where a plane cuts the model.
    glDisable(GL_CLIP_PLANE0);
    drawBackgrounds(all);
    drawTexts(all);
    drawPoints(all);
    glPopAttrib();
}

void MeasureRenderer::drawBackgrounds(const std::vector<Label>& all) const {
    auto renderer = qrn::component<SCRenderer>(m_document.lock(), qrnsg::SCHEMA_RENDERER);
    const Font* labelFont = font();
    if (!labelFont || !m_factory)
        return;
    PixelSpace pixels;
    for (const auto& label : all) {
        qrnsg::Mesh background;
        qrnsg::Polyline frame;
        qrnglutils::MarkupUtils::createMeasureBkGeometry(
            toPixels(renderer->camera, label.measure.anchor), label.measure, *labelFont, background,
            frame);
        const auto mesh = m_factory->createMeshRenderer(background);
        const auto lines = m_factory->createPolylineRenderer(frame);
        const auto& fill = m_background.diffuse;
        glColor4f(fill[0], fill[1], fill[2], fill[3]);
        if (mesh)
            mesh->render();
        const auto& edge = m_frame.color;
        if (label.selected)
            glColor4f(1.0f, 0.45f, 0.0f, 1.0f);
        else
            glColor4f(edge[0], edge[1], edge[2], edge[3]);
        glLineWidth(label.selected ? 2.0f : m_frame.width);
        if (lines)
            lines->render();
    }
}

void MeasureRenderer::drawTexts(const std::vector<Label>& all) const {
    auto renderer = qrn::component<SCRenderer>(m_document.lock(), qrnsg::SCHEMA_RENDERER);
    const Font* labelFont = font();
    if (!labelFont)
        return;
    PixelSpace pixels;
    glColor4f(0.0f, 0.0f, 0.0f, 1.0f);
    for (const auto& label : all) {
        const Vec3 at = toPixels(renderer->camera, label.measure.anchor);
        for (const auto& line : qrnglutils::MarkupUtils::labelLayout(label.measure, at[0], at[1],
                                                                     labelFont->lineHeight())) {
            // At most 255 characters a line.
            glRasterPos3d(line.x, line.y, 0.0);
            labelFont->draw(line.text.substr(0, 255));
        }
    }
}

void MeasureRenderer::drawPoints(const std::vector<Label>& all) const {
    std::vector<float> points;
    glDisable(GL_DEPTH_TEST);
    glColor4f(0.8f, 0.1f, 0.1f, 1.0f);
    glLineWidth(1.5f);
    for (const auto& label : all) {
        const auto& p = label.measure.points;
        for (const Vec3& v : p)
            points.insert(points.end(), {v[0], v[1], v[2]});
        // The line that the value measures.
        const std::size_t joined = label.strip ? p.size() : std::min<std::size_t>(p.size(), 2);
        if (label.measure.kind == qrnsg::Measure::DISTANCE && joined >= 2) {
            glBegin(GL_LINE_STRIP);
            for (std::size_t i = 0; i < joined; ++i)
                glVertex3f(p[i][0], p[i][1], p[i][2]);
            glEnd();
        }
    }
    if (points.empty())
        return;
    glEnable(GL_POINT_SMOOTH);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glPointSize(7.0f);
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    if (GLEW_VERSION_1_5)
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, 0, points.data());
    glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(points.size() / 3));
    glPopClientAttrib();
    glDisable(GL_POINT_SMOOTH);
}

void MeasureRenderer::pick(std::shared_ptr<NamesInitializer> names,
                           std::shared_ptr<qrnsg::IPairVisitor> visitor) {
    auto document = m_document.lock();
    auto measure = qrn::component<SCMeasure>(document, qrnsg::SCHEMA_MEASURE);
    auto renderer = qrn::component<SCRenderer>(document, qrnsg::SCHEMA_RENDERER);
    if (!measure || !renderer || !renderer->camera || !names || !visitor ||
        !(visitor->entityType() & 32))
        return;
    measure->labelNames.clear();
    if (measure->records.empty())
        return;
    const Font* labelFont = font();
    if (!labelFont)
        return;
    const auto camera = renderer->camera;
    const float height = static_cast<float>(camera->viewportHeight());
    glPushAttrib(GL_ENABLE_BIT | GL_DEPTH_BUFFER_BIT);
    glDisable(GL_CLIP_PLANE0);
    glDisable(GL_DEPTH_TEST);
    for (const auto& label : labels()) {
        if (!label.record)
            continue;
        qrnsg::Mesh background;
        qrnsg::Polyline frame;
        qrnglutils::MarkupUtils::createMeasureBkGeometry(
            toPixels(camera, label.measure.anchor), label.measure, *labelFont, background, frame);
        const unsigned int name = names->take();
        measure->labelNames[name] = label.record;
        names->load(name);
        // The label's window rectangle at the near plane, drawn in the pass's own matrices (a
        // selection pass narrows them to the pick square).
        glBegin(GL_QUADS);
        for (const Vec3& corner : background.vertices) {
            const Vec3 w = qrnglutils::MeasureUtils::worldPoint(
                camera, Vec3(corner[0], height - corner[1], 1e-4f));
            glVertex3f(w[0], w[1], w[2]);
        }
        glEnd();
    }
    glPopAttrib();
}

void MeasureRenderer::choose(const FilterResult& result) const {
    auto measure = qrn::component<SCMeasure>(m_document.lock(), qrnsg::SCHEMA_MEASURE);
    if (!measure)
        return;
    for (unsigned int name : result.names()) {
        auto found = measure->labelNames.find(name);
        if (found != measure->labelNames.end()) {
            measure->current = static_cast<int>(found->second);
            return;
        }
    }
}

} // namespace qrngl
