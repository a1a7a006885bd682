#include "qrngl/measure/SmartMeasureManipulator.h"

#include "RendererSlots.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/interaction/EntityGeometry.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/resources/StringTable.h"
#include "qrnglutils/MeasureUtils.h"
#include "qrnplatform/Environment.h"
#include "qrnplatform/Settings.h"
#include "qrnsg/SCInfo.h"
#include "qrnsgutils/InfoUtils.h"
#include "qrnsgutils/ResourceLoader.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace qrngl {

using qrnmath::Vec3;
using qrnsg::EntityNames;
using qrnsgutils::EntityMeasure;
using qrnsgutils::WorldEntity;

namespace {

std::wstring text(unsigned int id) {
    return qrnsgutils::ResourceLoader::getString(libraryModule(), id);
}

} // namespace

SmartMeasureManipulator::SmartMeasureManipulator(std::shared_ptr<qrn::IDocument> document,
                                                 std::shared_ptr<Cursor> cursor,
                                                 std::shared_ptr<qrn::IUpdater> updater)
    : IMeasureManipulator(document, std::move(cursor), std::move(updater)),
      m_factory(std::make_shared<RendererFactory>()) {
    m_renderer = std::make_shared<MeasureRenderer>(document, m_factory);
    m_filter = readFiltersFromRegistry();
}

SmartMeasureManipulator::~SmartMeasureManipulator() = default;

short SmartMeasureManipulator::readFiltersFromRegistry() {
    return readFiltersFromRegistry(qrnplatform::Environment::executableBaseName());
}

short SmartMeasureManipulator::readFiltersFromRegistry(const std::wstring& appName) {
    qrnplatform::Settings settings(L"Settings\\Measurement", appName);
    short filter = 0;
    const std::pair<const wchar_t*, short> values[] = {
        {L"Point", FILTER_POINT}, {L"Edge", FILTER_EDGE}, {L"Face", FILTER_FACE}};
    for (const auto& v : values) {
        unsigned int value = 0;
        const auto found = settings.readDwordCreatingKey(v.first, value);
        if (found == qrnplatform::Settings::KEY_UNAVAILABLE)
            return 0;
        // One byte of the value counts.
        if (found == qrnplatform::Settings::VALUE_READ && (value & 0xFFu) != 0)
            filter = static_cast<short>(filter | v.second);
    }
    return filter;
}

unsigned short SmartMeasureManipulator::pickMask(short filter) {
    return static_cast<unsigned short>(((filter & FILTER_POINT) ? 4 : 0) |
                                       ((filter & FILTER_EDGE) ? 2 : 0) |
                                       ((filter & FILTER_FACE) ? 1 : 0));
}

void SmartMeasureManipulator::init() {
    IMeasureManipulator::init();
    setMode(0);
    m_click.reset();
}

bool SmartMeasureManipulator::setCursor() {
    return false;
}

void SmartMeasureManipulator::setFilter(const short& filter) {
    m_filter = filter;
}

void SmartMeasureManipulator::setMode(const short& mode) {
    m_mode = mode;
    m_single = 0;
    if (auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE))
        measure->tmpReset();
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer)
        return;
    if (mode)
        addRenderer(*renderer, SCRenderer::MEASURE_RENDERER, m_renderer);
    else
        removeRenderer(*renderer, SCRenderer::MEASURE_RENDERER, m_renderer);
    renderer->update();
}

void SmartMeasureManipulator::clearAll() {
    if (auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE))
        measure->clearAll(true);
    m_single = 0;
}

bool SmartMeasureManipulator::getPickingResult(int x, int y, EntityPick& pick) const {
    auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!renderer)
        return false;
    unsigned int name = 0;
    Vec3 point, normal;
    EntityGeometry(m_document)
        .pointUnder(renderer->pickCanvas, renderer->camera, x, y, pickMask(m_filter), PICK_SIZE,
                    name, point, normal);
    const unsigned kind = EntityNames::kindOf(name);
    if (kind < EntityNames::EDGE_LIKE || kind > EntityNames::FACE)
        return false;
    pick = EntityPick(static_cast<EntityType>(kind), static_cast<int>(name));
    return true;
}

FrameStatus SmartMeasureManipulator::mouseButtonDown(FrameStatus status, unsigned int flags,
                                                     MouseButton button, int x, int y) {
    m_click.press(button, x, y);
    return IManipulator::mouseButtonDown(status, flags, button, x, y);
}

FrameStatus SmartMeasureManipulator::mouseMotion(unsigned int flags, int x, int y) {
    m_click.move(x, y);
    return IManipulator::mouseMotion(flags, x, y);
}

FrameStatus SmartMeasureManipulator::mouseButtonUp(FrameStatus status, unsigned int flags,
                                                   MouseButton button, int x, int y) {
    const FrameStatus base = IManipulator::mouseButtonUp(status, flags, button, x, y);
    const bool click = m_click.release(button);
    if (base == CHANGED || status == CHANGED)
        return CHANGED;
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    EntityPick pick;
    if (button != LEFT || !click || !m_mode || !measure || !getPickingResult(x, y, pick))
        return UNCHANGED;
    if (measure->selection.size() >= 2)
        measure->selection.clear();
    measure->selection.push_back(pick);
    measureSelectedEntities(x, y, false);
    if (measure->selection.size() >= 2)
        measure->tmpReset();
    if (auto renderer = qrn::component<SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER))
        renderer->update();
    return CHANGED;
}

FrameStatus SmartMeasureManipulator::mouseWheel(unsigned int, int, float) {
    return UNCHANGED;
}

FrameStatus SmartMeasureManipulator::keyDown(FrameStatus status, unsigned int key, unsigned int,
                                             unsigned int) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (status == UNCHANGED && key == 27 && measure && !measure->selection.empty()) {
        measure->tmpReset();
        return CHANGED;
    }
    return status;
}

FrameStatus SmartMeasureManipulator::keyUp(FrameStatus status, unsigned int, unsigned int,
                                           unsigned int) {
    return status;
}

FrameStatus SmartMeasureManipulator::mouseButtonDblClk(FrameStatus status, unsigned int flags,
                                                       MouseButton button, int x, int y) {
    return IManipulator::mouseButtonDblClk(status, flags, button, x, y);
}

std::shared_ptr<MeasureRT> SmartMeasureManipulator::measurePair(unsigned int first,
                                                                unsigned int second) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure)
        return nullptr;
    measure->tmpReset();
    for (unsigned int name : {first, second})
        measure->selection.push_back(
            EntityPick(static_cast<EntityType>(EntityNames::kindOf(name)), static_cast<int>(name)));
    const unsigned int before = m_last;
    measureSelectedEntities(0, 0, false);
    measure->tmpReset();
    return m_last != before ? last() : nullptr;
}

std::shared_ptr<MeasureRT> SmartMeasureManipulator::last() const {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    const auto* found = measure ? measure->records.find(m_last) : nullptr;
    return found ? *found : nullptr;
}

void SmartMeasureManipulator::measureSelectedEntities(int x, int y, bool flag) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure || measure->selection.empty())
        return;
    if (measure->selection.size() == 1) {
        measureSingleEntity(x, y, measure->selection[0], flag);
        return;
    }
    // The pair replaces the measure of its first pick alone.
    if (m_single) {
        measure->records.remove(m_single);
        ++measure->revision;
        m_single = 0;
    }
    dispatch(x, y, flag);
}

void SmartMeasureManipulator::dispatch(int x, int y, bool flag) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure || measure->selection.size() < 2)
        return;
    const EntityPick a = measure->selection[0], b = measure->selection[1];
    const int ta = a.first, tb = b.first;
    if (ta < 1 || ta > 4 || tb < 1 || tb > 4)
        return;
    const bool points = m_filter == 1;
    // Rows A, columns B.
    switch (ta * 10 + tb) {
    case 11:
    case 13:
    case 31:
        if (points)
            measureP2P(x, y, flag);
        else
            measureSelectedEdges(x, y, a, b, flag);
        break;
    case 12:
    case 21:
        if (points)
            measureP2P(x, y, flag);
        else
            measureSelectedPointEdge(x, y, a, b, flag);
        break;
    case 22:
        measureP2P(x, y, flag);
        break;
    case 23:
    case 32:
        measureSelectedPointEdge(x, y, a, b, flag);
        break;
    case 24:
    case 42:
        measureSelectedPointFace(x, y, a, b, flag);
        break;
    case 14:
    case 41:
    case 34:
    case 43:
        measureSelectedFaceEdge(x, y, a, b, flag);
        break;
    case 44:
        measureSelectedFaces(x, y, a, b, flag);
        break;
    case 33: {
        measureSelectedEdges(x, y, a, b, flag);
        // A second look at the kinds as the routine left them.
        if (measure->selection.size() < 2)
            break;
        const int na = measure->selection[0].first, nb = measure->selection[1].first;
        if (na != 3)
            dispatch(x, y, flag);
        else if (nb == 2)
            measureSelectedPointEdge(x, y, measure->selection[0], measure->selection[1], flag);
        else if (nb == 4)
            measureSelectedFaceEdge(x, y, measure->selection[0], measure->selection[1], flag);
        else if (nb == 1 && points)
            measureP2P(x, y, flag);
        break;
    }
    default:
        break;
    }
}

qrnsgutils::WorldEntity SmartMeasureManipulator::world(const EntityPick& pick) const {
    return EntityGeometry(m_document).entity(static_cast<unsigned int>(pick.second));
}

std::shared_ptr<MeasureRT> SmartMeasureManipulator::store(std::shared_ptr<MeasureRT> record) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (!measure || !record)
        return nullptr;
    m_last = measure->add(record);
    return record;
}

void SmartMeasureManipulator::measureDistance(const EntityPick& a, const EntityPick& b,
                                              bool withAngle) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    const WorldEntity first = world(a), second = world(b);
    const auto result = EntityMeasure::distance(first, second);
    if (!measure || !info || !result.valid)
        return;
    auto record = std::make_shared<MeasureRT>(MeasureRT::DISTANCE, MeasureRT::TEMPORARY);
    record->value = result.value;
    record->exact = result.exact;
    record->entities = {static_cast<unsigned int>(a.second), static_cast<unsigned int>(b.second)};
    record->points = {result.a, result.b};
    record->anchor = (result.a + result.b) * 0.5f;
    qrnglutils::MeasureUtils::formatLength(result.value, MeasureRT::DISTANCE, *measure, *info,
                                           record->text);
    if (withAngle) {
        const auto angle = EntityMeasure::angle(first, second);
        // Parallel or square pairs say it by the distance alone.
        if (angle.valid && std::fabs(std::sin(angle.value)) > 1e-3f)
            record->text +=
                L";  Angle: " + qrnglutils::MeasureUtils::formatAngle(angle.value, *measure);
    }
    const Vec3 d = result.b - result.a;
    if (qrnglutils::MeasureUtils::shouldCreateDelta(d[0], d[1], d[2])) {
        record->delta.delta = d;
        record->delta.valid = true;
        const MeasureRT::MType kinds[] = {MeasureRT::DELTA_X, MeasureRT::DELTA_Y,
                                          MeasureRT::DELTA_Z};
        for (int i = 0; i < 3; ++i) {
            record->text += L"\n";
            qrnglutils::MeasureUtils::formatLength(d[i], kinds[i], *measure, *info, record->text);
        }
    }
    store(record);
}

void SmartMeasureManipulator::measureSelectedEdges(int, int, const EntityPick& a,
                                                   const EntityPick& b, bool) {
    measureDistance(a, b, true);
}

void SmartMeasureManipulator::measureSelectedFaceEdge(int, int, const EntityPick& a,
                                                      const EntityPick& b, bool) {
    measureDistance(a, b, true);
}

void SmartMeasureManipulator::measureSelectedFaces(int, int, const EntityPick& a,
                                                   const EntityPick& b, bool) {
    measureDistance(a, b, true);
}

void SmartMeasureManipulator::measureSelectedPointEdge(int, int, const EntityPick& a,
                                                       const EntityPick& b, bool) {
    measureDistance(a, b, false);
}

void SmartMeasureManipulator::measureSelectedPointFace(int, int, const EntityPick& a,
                                                       const EntityPick& b, bool) {
    measureDistance(a, b, false);
}

void SmartMeasureManipulator::measureP2P(int, int, bool) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    if (measure && measure->selection.size() >= 2)
        measureDistance(measure->selection[0], measure->selection[1], false);
}

void SmartMeasureManipulator::measureSingleEntity(int, int, const EntityPick& pick, bool) {
    auto measure = qrn::component<SCMeasure>(m_document, qrnsg::SCHEMA_MEASURE);
    auto info = qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO);
    const WorldEntity entity = world(pick);
    if (!measure || !info || entity.kind == WorldEntity::NONE)
        return;
    std::shared_ptr<MeasureRT> record;
    auto line = [&](const std::wstring& label, float value) {
        if (!record->text.empty())
            record->text += L"\n";
        record->text += label;
        qrnglutils::MeasureUtils::formatLength(value, MeasureRT::NONE, *measure, *info,
                                               record->text);
    };
    Vec3 centre, axis;
    float radius = 0.0f;
    bool exact = false;
    if (entity.kind == WorldEntity::POINT) {
        record = std::make_shared<MeasureRT>(MeasureRT::POINT, MeasureRT::TEMPORARY);
        record->points = {entity.point};
        record->anchor = entity.point;
        line(L"X ", entity.point[0]);
        line(L"Y ", entity.point[1]);
        line(L"Z ", entity.point[2]);
    } else if (EntityMeasure::circle(entity, centre, axis, radius, &exact)) {
        record = std::make_shared<MeasureRT>(MeasureRT::RADIUS, MeasureRT::TEMPORARY);
        record->value = radius;
        record->exact = exact;
        // A point of the circle across from the centre, square to the axis.
        const Vec3 seed = std::fabs(axis[0]) < 0.9f ? Vec3(1, 0, 0) : Vec3(0, 1, 0);
        const Vec3 out = qrnmath::cross(axis, seed).normalized();
        record->points = {centre, centre + out * radius};
        record->anchor = centre + out * (radius * 0.5f);
        line(L"R ", radius);
        line(L"\u00d8 ", 2.0f * radius);
        qrnsg::SCInfo::UNITS unit;
        double factor = 1.0;
        int precision = 1;
        qrnglutils::MeasureUtils::displayUnit(*measure, *info, unit, factor, precision);
        std::wostringstream c;
        c << std::fixed << std::setprecision(precision) << text(IDS_CENTER) << L" ("
          << centre[0] * factor << L", " << centre[1] * factor << L", " << centre[2] * factor
          << L")";
        record->text += L"\n" + c.str();
    } else if (entity.kind == WorldEntity::EDGE) {
        record = std::make_shared<MeasureRT>(MeasureRT::LENGTH, MeasureRT::TEMPORARY);
        record->value = EntityMeasure::length(entity);
        record->exact = entity.curve.type == qrnsg::PartEntities::Curve::LINE;
        record->points = entity.polyline;
        record->anchor = entity.polyline[entity.polyline.size() / 2];
        line(L"L ", record->value);
    } else {
        record = std::make_shared<MeasureRT>(MeasureRT::AREA, MeasureRT::TEMPORARY);
        record->value = EntityMeasure::area(entity);
        Vec3 sum;
        for (const Vec3& p : entity.triangles)
            sum = sum + p;
        record->anchor = sum / static_cast<float>(entity.triangles.size());
        qrnsg::SCInfo::UNITS unit;
        double factor = 1.0;
        int precision = 1;
        qrnglutils::MeasureUtils::displayUnit(*measure, *info, unit, factor, precision);
        std::wostringstream a;
        a << std::fixed << std::setprecision(precision) << record->value * factor * factor;
        std::wstring number = a.str();
        qrnglutils::MeasureUtils::getMsrValueStr(number);
        record->text = text(IDS_AREA) + L" " + number + L"  " +
                       qrnsgutils::InfoUtils::getUnitName(unit) + L"\u00b2";
    }
    record->entities = {static_cast<unsigned int>(pick.second)};
    store(record);
    m_single = m_last;
}

const char* SmartMeasureManipulator::kindName(MeasureRT::MType type) {
    switch (type) {
    case MeasureRT::DISTANCE:
        return "distance";
    case MeasureRT::ANGLE:
        return "angle";
    case MeasureRT::RADIUS:
        return "radius";
    case MeasureRT::LENGTH:
        return "length";
    case MeasureRT::AREA:
        return "area";
    case MeasureRT::POINT:
        return "point";
    default:
        return "measure";
    }
}

} // namespace qrngl
