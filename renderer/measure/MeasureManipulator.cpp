#include "qrngl/measure/MeasureManipulator.h"

#include "RendererSlots.h"
#include "qrngl/GL.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/interaction/EntityGeometry.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/picking/EntityFilter.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnglutils/MarkupUtils.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCTempGraphics.h"

#include <cmath>
#include <string>

namespace qrngl {

using qrnmath::Vec3;

namespace {

// The points picked towards the next measurement, drawn over the model.
class PendingPoints : public IRenderer {
public:
    explicit PendingPoints(std::weak_ptr<qrn::IDocument> document)
        : m_document(std::move(document)) {}
    void render() const override {
        auto temp =
            qrn::component<qrnsg::SCTempGraphics>(m_document.lock(), qrnsg::SCHEMA_TEMP_GRAPHICS);
        if (!temp || temp->points.empty())
            return;
        glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_POINT_BIT | GL_COLOR_BUFFER_BIT);
        glDisable(GL_LIGHTING);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CLIP_PLANE0);
        glEnable(GL_POINT_SMOOTH);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glPointSize(7.0f);
        glColor4f(0.8f, 0.1f, 0.1f, 1.0f);
        glBegin(GL_POINTS);
        for (const Vec3& p : temp->points)
            glVertex3f(p[0], p[1], p[2]);
        glEnd();
        glPopAttrib();
    }
    short order() const override { return 0; }

private:
    std::weak_ptr<qrn::IDocument> m_document;
};

} // namespace

MeasureManipulator::MeasureManipulator(std::shared_ptr<qrn::IDocument> document,
                                       std::shared_ptr<Cursor> cursor,
                                       std::shared_ptr<qrn::IUpdater> updater)
    : IMeasureManipulator(document, std::move(cursor), std::move(updater)),
      m_pickFilter(std::make_shared<EntityFilter>(0, EntityFilter::NEAREST)),
      m_factory(std::make_shared<RendererFactory>()) {
    m_renderer = std::make_shared<MeasureRenderer>(document, m_factory);
    m_pointsRenderer = std::make_shared<PendingPoints>(document);
}

MeasureManipulator::~MeasureManipulator() = default;

void MeasureManipulator::init() {
    IMeasureManipulator::init();
    setMode(0);
    m_click.reset();
}

bool MeasureManipulator::setCursor() {
    return false;
}

void MeasureManipulator::setFilter(const short& filter) {
    m_filter = filter;
}

void MeasureManipulator::setMode(const short& mode) {
    m_mode = mode;
    reset();
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer)
        return;
    if (mode & (POINT_MODE | DISTANCE_MODE)) {
        addRenderer(*renderer, SCRenderer::MEASURE_RENDERER, m_renderer);
        if (mode & DISTANCE_MODE)
            addRenderer(*renderer, SCRenderer::MEASURE_POINTS_RENDERER, m_pointsRenderer);
        // Faces, a cut part's cap and vertices, which snap.
        m_pickFilter->type() = 1 | 4;
    } else {
        removeRenderer(*renderer, SCRenderer::MEASURE_RENDERER, m_renderer);
        removeRenderer(*renderer, SCRenderer::MEASURE_POINTS_RENDERER, m_pointsRenderer);
        m_pickFilter->type() = 0;
    }
    renderer->update();
}

void MeasureManipulator::clearAll() {
    reset();
    if (auto temp = qrn::component<qrnsg::SCTempGraphics>(m_document, qrnsg::SCHEMA_TEMP_GRAPHICS))
        temp->measures.clear();
}

void MeasureManipulator::reset() {
    m_pending = false;
    if (auto temp = qrn::component<qrnsg::SCTempGraphics>(m_document, qrnsg::SCHEMA_TEMP_GRAPHICS))
        temp->points.clear();
}

FrameStatus MeasureManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                                MouseButton button, int x, int y) {
    m_click.press(button, x, y);
    return IManipulator::mouseButtonDown(status, flags, button, x, y);
}

FrameStatus MeasureManipulator::mouseMotion(unsigned int flags, int x, int y) {
    m_click.move(x, y);
    return IManipulator::mouseMotion(flags, x, y);
}

bool MeasureManipulator::getPointInWorld(int x, int y, Vec3& point, Vec3& normal) const {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    unsigned int name = 0;
    return renderer && EntityGeometry(m_document)
                           .pointUnder(renderer->pickCanvas, renderer->camera, x, y,
                                       m_pickFilter->type(), PICK_SIZE, name, point, normal);
}

FrameStatus MeasureManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                              MouseButton button, int x, int y) {
    const FrameStatus base = IManipulator::mouseButtonUp(status, flags, button, x, y);
    const bool click = m_click.release(button);
    if (base == CHANGED || status == CHANGED)
        return CHANGED;
    if (button != LEFT || !click || m_filter == 0 || m_mode == 0)
        return UNCHANGED;
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    auto temp = qrn::component<qrnsg::SCTempGraphics>(m_document, qrnsg::SCHEMA_TEMP_GRAPHICS);
    if (!measure || !info || !temp)
        return UNCHANGED;
    Vec3 point, normal;
    if (!getPointInWorld(x, y, point, normal))
        return UNCHANGED;
    if (m_mode & DISTANCE_MODE) {
        if (!m_pending) {
            m_first = point;
            m_firstNormal = normal;
            m_pending = true;
            temp->points.push_back(point);
            return CHANGED;
        }
        // Opposite normals leave a zero mean, which stays as it is.
        Vec3 mean = (m_firstNormal + normal) / 2.0f;
        if (mean.length() > 1e-11f)
            mean = mean.normalized();
        temp->add(std::make_shared<qrnsg::Measure>(qrnglutils::MarkupUtils::createMeasureLineMarkup(
            m_first, point, mean, *measure, *info)));
        reset();
        return CHANGED;
    }
    const std::wstring name = std::to_wstring(temp->measures.size() + 1);
    temp->add(std::make_shared<qrnsg::Measure>(
        qrnglutils::MarkupUtils::createMeasurePointMarkup(point, normal, name, *measure, *info)));
    reset();
    return CHANGED;
}

FrameStatus MeasureManipulator::mouseWheel(unsigned int, int, float) {
    return UNCHANGED;
}

FrameStatus MeasureManipulator::keyDown(FrameStatus status, unsigned int key, unsigned int,
                                        unsigned int) {
    if (status == UNCHANGED && key == 27 && m_pending) {
        reset();
        return CHANGED;
    }
    return status;
}

FrameStatus MeasureManipulator::keyUp(FrameStatus status, unsigned int, unsigned int,
                                      unsigned int) {
    return status;
}

FrameStatus MeasureManipulator::mouseButtonDblClk(FrameStatus status, unsigned int flags,
                                                  MouseButton button, int x, int y) {
    return IManipulator::mouseButtonDblClk(status, flags, button, x, y);
}

} // namespace qrngl
