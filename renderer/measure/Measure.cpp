#include "qrngl/measure/Measure.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/resources/StringTable.h"
#include "qrnglutils/BBoxUtils.h"
#include "qrnglutils/MeasureUtils.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnmath/Ray.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCView.h"
#include "qrnsgutils/InfoUtils.h"
#include "qrnsgutils/ResourceLoader.h"
#include "qrnui/Hint.h"

namespace qrngl {

using qrnmath::MatrixUtils;
using qrnmath::Vec3;

Measure::Measure(std::shared_ptr<IRendererFactory> factory,
                 std::shared_ptr<qrn::IDocument> document, std::shared_ptr<qrn::IUpdater> updater,
                 std::shared_ptr<Font> font)
    : m_factory(std::move(factory)), m_document(std::move(document)), m_updater(std::move(updater)),
      m_font(std::move(font)) {}

Measure::~Measure() = default;

bool Measure::getUnitInfo(double& factor, std::wstring& unitName, unsigned char& precision) const {
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!info || !measure)
        return false;
    const auto unit = measure->settings.unit == SCMeasure::DOCUMENT_UNIT
                          ? info->lengthUnit
                          : static_cast<qrnsg::SCInfo::UNITS>(measure->settings.unit);
    factor = static_cast<double>(qrnsgutils::InfoUtils::getMeterToUnitFactor(unit));
    unitName = qrnsgutils::InfoUtils::getUnitName(unit);
    precision = measure->settings.precision == 0 ? 1 : measure->settings.precision;
    return true;
}

void Measure::convertIntoString(float value, const MeasureRT::MType& type,
                                std::wstring& out) const {
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (info && measure)
        qrnglutils::MeasureUtils::formatLength(value, type, *measure, *info, out);
}

void Measure::getText(const std::wstring& text, const Vec3& position, const qrnmath::Mat4& matrix,
                      const float& height, const float& width,
                      std::vector<qrnsg::Text>& out) const {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    out.clear();
    if (!measure || !renderer)
        return;
    const qrnmath::Mat4 transform =
        MatrixUtils::multiply(MatrixUtils::translation(position), matrix);
    qrnsg::Text label;
    label.text = text;
    label.height = height;
    label.position = MatrixUtils::transformPoint(transform, Vec3());
    label.direction = MatrixUtils::transformVector(transform, Vec3(1, 0, 0));
    label.up = MatrixUtils::transformVector(transform, Vec3(0, 1, 0));
    (void)width;
    if (measure->settings.textOrientation == 1 || measure->billboard == 1) {
        // Turned to the viewer where it stands: the billboard rotation with the text's own
        // translation.
        const qrnmath::Mat4 billboard = CameraHelper::getBillboardRotation(renderer->camera);
        label.direction = MatrixUtils::transformVector(billboard, Vec3(1, 0, 0));
        label.up = MatrixUtils::transformVector(billboard, Vec3(0, 1, 0));
        label.position = Vec3(transform[12], transform[13], transform[14]);
    }
    out.push_back(label);
}

bool Measure::getMeasureTextPoint(const int& x, const int& y, const qrnmath::Vec4& plane,
                                  Vec3& point) const {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer || !renderer->camera)
        return false;
    const Vec3 nearPoint = qrnglutils::MeasureUtils::worldPoint(
        renderer->camera, Vec3(static_cast<float>(x), static_cast<float>(y), 0.0f));
    const Vec3 farPoint = qrnglutils::MeasureUtils::worldPoint(
        renderer->camera, Vec3(static_cast<float>(x), static_cast<float>(y), 1.0f));
    const qrnmath::Ray ray(nearPoint, farPoint - nearPoint);
    float t = 0.0f;
    if (!qrnmath::PlaneUtils::intersect(plane, ray, t))
        return false;
    point = ray.pointAt(t);
    return true;
}

bool Measure::isExistingMeasure() const {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure || measure->records.empty())
        return false;
    return qrnglutils::MeasureUtils::isMeasureRTPresent(measure, measure->records.begin()->first);
}

bool Measure::associateView(const int& viewId) const {
    auto views = qrn::component<qrnsg::SCView>(m_document, qrnsg::SCHEMA_VIEW);
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!views || !measure || measure->records.empty() || viewId < 0 ||
        static_cast<std::size_t>(viewId) >= views->views.size())
        return false;
    auto& list = views->views[static_cast<std::size_t>(viewId)].measures;
    const unsigned int id = measure->records.begin()->first;
    if (std::find(list.begin(), list.end(), id) == list.end())
        list.push_back(id);
    return true;
}

void Measure::addMarkup(const EntityPick& entity, const qrnsg::Text& text) const {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure || measure->records.empty())
        return;
    auto& record = measure->records.begin()->second;
    if (!record)
        return;
    record->saveMode = MeasureRT::SAVED;
    record->name = qrnsgutils::ResourceLoader::getString(libraryModule(), IDS_DIMENSION);
    if (std::find(record->entities.begin(), record->entities.end(),
                  static_cast<unsigned int>(entity.second)) == record->entities.end())
        record->entities.push_back(static_cast<unsigned int>(entity.second));
    if (!text.text.empty()) {
        record->text = text.text;
        record->anchor = text.position;
    }
    ++measure->revision;
}

qrnsg::BBox Measure::getRootBounds() const {
    return qrnglutils::BBoxUtils::getRoot(m_document);
}

void Measure::updateViews(bool created) const {
    auto views = qrn::component<qrnsg::SCView>(m_document, qrnsg::SCHEMA_VIEW);
    if (!views || !m_updater)
        return;
    short code = 0;
    if (views->mode == 2)
        code = 14;
    else if (views->mode == 1)
        code = created ? 13 : 14;
    if (code)
        m_updater->update(qrnui::Hint(code, m_document));
}

} // namespace qrngl
