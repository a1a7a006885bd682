#include "qrnviewer/Sectioning.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCClipping.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/section/BasicClipProfiler.h"
#include "qrngl/section/SectionActivator.h"
#include "qrnglutils/ClipplaneUtils.h"
#include "qrnmath/MatrixUtils.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCInfo.h"
#include "qrnsg/SCPmi.h"
#include "qrnsg/SCScene.h"
#include "qrnsg/SCSceneTopo.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace qrnviewer {

using qrngl::SCClipping;
using qrnmath::Vec3;

namespace {
// Axis x, y, z to the plane type whose normal lies along it.
const SCClipping::PLANETYPE kTypes[3] = {SCClipping::YZ, SCClipping::ZX, SCClipping::XY};
const char* const kAxes[3] = {"X", "Y", "Z"};

class Report : public qrn::IApplication {
public:
    explicit Report(std::function<void(const std::string&)> say) : m_say(std::move(say)) {}
    void showResult(const std::wstring& text, bool) override {
        m_say(qrnplatform::Text::toUtf8(text));
    }

private:
    std::function<void(const std::string&)> m_say;
};

} // namespace

Sectioning::Sectioning(std::shared_ptr<qrn::IDocument> document,
                       std::shared_ptr<qrngl::Cursor> cursor)
    : m_document(std::move(document)),
      m_clip(std::make_shared<qrngl::ClipManipulator>(m_document, std::move(cursor))) {
    auto clipping = qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    auto scene = qrn::component<qrnsg::SCScene>(m_document, qrnsg::SCHEMA_SCENE);
    if (clipping && !clipping->profiler) {
        // Points closer than a millionth of the model count as one.
        const float tolerance = scene ? std::max(scene->bbox().diagonal() * 1e-6f, 1e-9f) : 1e-6f;
        clipping->profiler = std::make_shared<qrngl::BasicClipProfiler>(m_document, tolerance);
    }
    m_report = std::make_shared<Report>([this](const std::string& text) { say(text); });
    m_clip->setApp(m_report);
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER))
        renderer->addManipulator(m_clip);
}

Sectioning::~Sectioning() {
    m_clip->setApp(nullptr);
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER)) {
        m_clip->init();
        renderer->removeManipulator(m_clip);
    }
}

bool Sectioning::parseAxis(const std::string& text, Settings& settings) {
    if (text.empty())
        return false;
    const char axis = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    if (axis < 'x' || axis > 'z')
        return false;
    settings.axis = axis - 'x';
    settings.offset = 0.0;
    if (text.size() == 1)
        return true;
    if (text[1] != '@' || text.size() < 3)
        return false;
    char* end = nullptr;
    settings.offset = std::strtod(text.c_str() + 2, &end);
    return *end == '\0' && std::isfinite(settings.offset);
}

bool Sectioning::parseCaps(const std::string& text, Caps& caps) {
    static const char* const names[] = {"part", "single", "off"};
    for (int i = 0; i < 3; ++i)
        if (text == names[i]) {
            caps = static_cast<Caps>(i);
            return true;
        }
    return false;
}

void Sectioning::cut(int axis) {
    m_axis = axis;
    // One plane at a time: the one before is removed, not kept behind the new one.
    m_clip->setClipType(SCClipping::NONE);
    if (axis >= 0 && axis < 3)
        m_clip->setClipType(kTypes[axis]);
    else if (axis >= 3)
        qrngl::SectionActivator(
            qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER),
            qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI))
            .execute(axis - 3);
}

int Sectioning::sections() const {
    auto pmi = qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI);
    return pmi ? static_cast<int>(pmi->sections.size()) : 0;
}

bool Sectioning::apply(const Settings& settings, std::string& error) {
    auto clipping = qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    if (!clipping || settings.axis < 0)
        return true;
    clipping->capped = settings.caps != OFF;
    clipping->capMode = settings.caps == SINGLE ? SCClipping::SINGLE : SCClipping::PART_COLOURS;
    clipping->hatched = settings.hatch;
    cut(settings.axis);
    if (!clipping->hasPlane()) {
        error = "the model is empty: nothing to cut";
        return false;
    }
    if (settings.offset != 0.0) {
        // Along +axis, whichever way the plane's normal was turned.
        const Vec3 normal = qrnmath::PlaneUtils::normal(clipping->planes.front());
        const float along = normal[settings.axis];
        const float before = qrnglutils::ClipplaneUtils::getOffset(*clipping);
        m_clip->offsetSection(std::fabs(settings.offset),
                              (settings.offset > 0.0) == (along > 0.0f));
        if (qrnglutils::ClipplaneUtils::getOffset(*clipping) == before) {
            char offset[32];
            std::snprintf(offset, sizeof offset, "%g", settings.offset);
            error = std::string("offset ") + offset + " along " + kAxes[settings.axis] +
                    " lies outside the model";
            return false;
        }
    }
    if (settings.flip)
        m_clip->flip();
    if (settings.profile != clipping->showProfile)
        m_clip->showProfile();
    say(describe());
    const std::string open = uncapped();
    if (!open.empty() && clipping->capped)
        say("no cap for " + open + " (not closed solids)");
    return true;
}

bool Sectioning::key(unsigned int key, bool shift) {
    auto clipping = qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    if (!clipping)
        return false;
    switch (key) {
    case 'L':
        cut(shift ? -1 : (m_axis + 1) % (3 + sections()));
        break;
    case 'J':
        if (!clipping->hasPlane())
            return false;
        if (shift)
            clipping->hatched = !clipping->hatched;
        else
            m_clip->flip();
        break;
    case 'K':
        if (!clipping->hasPlane())
            return false;
        if (shift) {
            m_clip->showProfile();
        } else if (!clipping->capped) {
            clipping->capped = true;
            clipping->capMode = SCClipping::PART_COLOURS;
        } else if (clipping->capMode == SCClipping::PART_COLOURS) {
            clipping->capMode = SCClipping::SINGLE;
        } else {
            clipping->capped = false;
        }
        break;
    default:
        return false;
    }
    if (auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER))
        renderer->update();
    say(describe());
    const std::string open = uncapped();
    if (key == 'L' && !shift && !open.empty() && clipping->capped)
        say("no cap for " + open + " (not closed solids)");
    return true;
}

bool Sectioning::pointOnCut(int x, int y, Vec3& point) const {
    auto clipping = qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    if (!clipping || !clipping->hasPlane() || !renderer)
        return false;
    const auto inverse = qrnmath::MatrixUtils::inverse(
        qrngl::CameraHelper::getModelToScreen(renderer->camera), 0.0f);
    const Vec3 a = qrnmath::MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, 0.0f));
    const Vec3 b = qrnmath::MatrixUtils::transformPoint(
        inverse, Vec3(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, 1.0f));
    return qrnmath::PlaneUtils::intersectSegment(clipping->planes.front(), a, b, point);
}

std::string Sectioning::describe() const {
    auto clipping = qrn::component<SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    if (!clipping || !clipping->hasPlane())
        return "no cut";
    std::wstring offset;
    qrnglutils::ClipplaneUtils::getOffsetDist(
        clipping, qrn::component<qrnsg::SCInfo>(m_document, qrnsg::SCHEMA_INFO), offset, 2);
    auto pmi = qrn::component<qrnsg::SCPmi>(m_document, qrnsg::SCHEMA_PMI);
    const auto section = m_axis - 3;
    std::string text =
        m_axis >= 0 && m_axis < 3 ? std::string("cut along ") + kAxes[m_axis]
        : pmi && section >= 0 && section < static_cast<int>(pmi->sections.size())
            ? "section " + qrnplatform::Text::toUtf8(pmi->sections[std::size_t(section)]->name)
            : std::string("cut");
    text = text + (clipping->flipped ? " (flipped)" : "") + ", " +
           qrnplatform::Text::toUtf8(offset) + ", caps ";
    text += !clipping->capped                               ? "off"
            : clipping->capMode == SCClipping::PART_COLOURS ? "in part colours"
                                                            : "in one colour";
    if (clipping->capped && clipping->hatched)
        text += ", hatched";
    text += clipping->showProfile ? ", profile on" : ", profile off";
    return text;
}

std::string Sectioning::uncapped() const {
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    std::string names;
    std::size_t count = 0;
    for (int node : m_clip->preRenderer()->openCutNodes()) {
        if (++count > 5)
            continue;
        std::string name =
            topology && node >= 0 && static_cast<std::size_t>(node) < topology->nodes.size()
                ? qrnplatform::Text::toUtf8(topology->nodes[static_cast<std::size_t>(node)].name)
                : std::string("a part");
        names += (names.empty() ? "" : ", ") + name;
    }
    if (count > 5)
        names += " and " + std::to_string(count - 5) + " more";
    return names;
}

void Sectioning::say(const std::string& text) const {
    if (m_say)
        m_say(text);
}

} // namespace qrnviewer
