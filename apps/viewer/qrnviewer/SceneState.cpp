#include "qrnviewer/SceneState.h"

#include "qrngl/SCClipping.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/section/SectionStateActivator.h"
#include "qrnmath/PlaneUtils.h"
#include "qrnplatform/Text.h"
#include "qrnsg/SCSceneRT.h"
#include "qrnsg/SCSceneTopo.h"
#include "qrnviewer/Explosion.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace qrnviewer {

namespace {

const char* const kHeader = "qrnview scene state 1";

// Each primitive of a placed part, named by its node and its kind and place in it.
struct Slot {
    int node;
    int kind; // 0 meshes, 1 edges, 2 vertices
    int slot;
    int id;
};

std::vector<Slot> slots(const qrnsg::SCSceneTopo& topology) {
    std::vector<Slot> out;
    for (std::size_t n = 0; n < topology.nodes.size(); ++n) {
        const auto& node = topology.nodes[n];
        const std::vector<int>* lists[3] = {&node.meshIds, &node.polylineIds, &node.pointIds};
        for (int k = 0; k < 3; ++k)
            for (std::size_t s = 0; s < lists[k]->size(); ++s)
                out.push_back({static_cast<int>(n), k, static_cast<int>(s), (*lists[k])[s]});
    }
    return out;
}

qrnsg::RTState& stateOf(qrnsg::SCSceneRT& rt, int kind) {
    static const qrnsg::SCSceneRT::Kind kinds[3] = {
        qrnsg::SCSceneRT::MESHES, qrnsg::SCSceneRT::POLYLINES, qrnsg::SCSceneRT::POINTS};
    return rt.of(kinds[kind]);
}

} // namespace

SceneState::SceneState(std::shared_ptr<qrn::IDocument> document, Explosion* explode)
    : m_document(std::move(document)), m_explode(explode) {}

bool SceneState::save(const std::string& path, std::string& error) const {
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto clipping = qrn::component<qrngl::SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    if (!renderer || !renderer->camera || !rt || !topology) {
        error = "cannot save a scene state of this document";
        return false;
    }
    std::ostringstream out;
    out.precision(9);
    out << kHeader << "\n";
    const auto& c = *renderer->camera;
    out << "camera " << c.projection() << " " << c.zoomFactor();
    for (int i = 0; i < 16; ++i)
        out << " " << c.modelRotation()[i];
    for (int i = 0; i < 3; ++i)
        out << " " << c.modelTranslation()[i];
    for (int i = 0; i < 3; ++i)
        out << " " << c.sphereCentre()[i];
    out << " " << c.sphereRadius() << "\n";
    out << "nodes " << topology->nodes.size() << "\n";
    for (const Slot& s : slots(*topology)) {
        const auto& state = stateOf(*rt, s.kind);
        const unsigned char* flags = state.flags.find(s.id);
        const int* material = state.materials.find(s.id);
        out << "part " << s.node << " " << s.kind << " " << s.slot << " "
            << ((flags && (*flags & qrnsg::RTState::VISIBLE)) ? 1 : 0) << " "
            << (material ? *material : -1) << "\n";
    }
    for (std::size_t m = 0; m < rt->meshMaterialRecords.size(); ++m)
        out << "transparent " << m << " " << (rt->meshMaterialRecords[m].isTransparent() ? 1 : 0)
            << "\n";
    if (clipping && clipping->hasPlane()) {
        const auto& p = clipping->planes.front();
        const qrnmath::Vec3 n = qrnmath::PlaneUtils::normal(p) * (clipping->flipped ? -1.f : 1.f);
        const qrnmath::Vec3 at = qrnmath::PlaneUtils::pointOn(p);
        out << "section " << at[0] << " " << at[1] << " " << at[2] << " " << n[0] << " " << n[1]
            << " " << n[2] << " " << clipping->flipped << " " << clipping->capped << " "
            << clipping->capMode << " " << clipping->hatched << " " << clipping->showProfile
            << "\n";
    }
    out << "explode " << (m_explode ? m_explode->level() : 0) << "\nend\n";

    // A new file renamed over the old: never half a state.
    const std::string temporary = path + ".new";
    {
        std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
        file << out.str();
        file.flush();
        if (!file) {
            error = "cannot write " + temporary + ": " + std::strerror(errno);
            std::error_code ignored;
            std::filesystem::remove(temporary, ignored);
            return false;
        }
    }
    std::error_code code;
    std::filesystem::rename(temporary, path, code);
    if (code) {
        error = "cannot write " + path + ": " + code.message();
        std::filesystem::remove(temporary, code);
        return false;
    }
    return true;
}

bool SceneState::load(const std::string& path, std::string& error) {
    auto renderer = qrn::component<qrngl::SCRenderer>(m_document, qrnsg::SCHEMA_RENDERER);
    auto rt = qrn::component<qrnsg::SCSceneRT>(m_document, qrnsg::SCHEMA_SCENE_RT);
    auto topology = qrn::component<qrnsg::SCSceneTopo>(m_document, qrnsg::SCHEMA_SCENE_TOPO);
    auto clipping = qrn::component<qrngl::SCClipping>(m_document, qrnsg::SCHEMA_CLIPPING);
    if (!renderer || !renderer->camera || !rt || !topology) {
        error = path + ": this document takes no scene state";
        return false;
    }
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) {
        error = "cannot read scene state " + path + ": it is a folder";
        return false;
    }
    std::ifstream in(path);
    if (!in) {
        error = "cannot read scene state " + path + ": " + std::strerror(errno);
        return false;
    }
    // Read and checked whole first: nothing changes unless all of it fits the model.
    qrngl::Camera camera = *renderer->camera;
    struct Part {
        Slot slot;
        bool shown;
        int material;
    };
    std::vector<Part> parts;
    std::vector<std::pair<std::size_t, bool>> transparent;
    std::shared_ptr<qrnsg::Section> section;
    bool flipped = false, capped = true, hatched = false, profile = false;
    int capMode = 0, explode = 0;
    bool header = false, ended = false, hasCamera = false, nodesOk = false;
    const std::vector<Slot> known = slots(*topology);
    std::string line;
    int number = 0;
    auto fail = [&](const std::string& why) {
        error = path + ": line " + std::to_string(number) + ": " + why;
        return false;
    };
    while (std::getline(in, line)) {
        ++number;
        if (!header) {
            if (line != kHeader)
                return fail("not a qrnview scene state");
            header = true;
            continue;
        }
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "camera") {
            int projection = 0;
            float zoom = 0.0f;
            qrnmath::Mat4 rotation;
            qrnmath::Vec3 translation, centre;
            float radius = 0.0f;
            words >> projection >> zoom;
            for (int i = 0; i < 16; ++i)
                words >> rotation[i];
            for (int i = 0; i < 3; ++i)
                words >> translation[i];
            for (int i = 0; i < 3; ++i)
                words >> centre[i];
            words >> radius;
            if (!words ||
                (projection != qrngl::Camera::PERSPECTIVE &&
                 projection != qrngl::Camera::ORTHOGRAPHIC) ||
                !(zoom > 0.0f) || !(radius > 0.0f))
                return fail("bad camera");
            camera.setSphere(centre, radius);
            camera.setProjection(static_cast<qrngl::Camera::Projection>(projection));
            camera.setZoomFactor(zoom);
            camera.setModelRotation(rotation);
            camera.setModelTranslation(translation);
            hasCamera = true;
        } else if (word == "nodes") {
            std::size_t count = 0;
            if (!(words >> count) || count != topology->nodes.size())
                return fail("made for a model of other parts");
            nodesOk = true;
        } else if (word == "part") {
            Part p{};
            int shown = 0;
            words >> p.slot.node >> p.slot.kind >> p.slot.slot >> shown >> p.material;
            if (!words || !nodesOk)
                return fail("bad part");
            bool found = false;
            for (const Slot& s : known)
                if (s.node == p.slot.node && s.kind == p.slot.kind && s.slot == p.slot.slot) {
                    p.slot.id = s.id;
                    found = true;
                }
            if (!found)
                return fail("names a part the model lacks");
            if (p.material < -1 ||
                (p.slot.kind == 0 && p.material >= static_cast<int>(rt->meshSceneMaterials.size())))
                return fail("bad material");
            p.shown = shown != 0;
            parts.push_back(p);
        } else if (word == "transparent") {
            std::size_t m = 0;
            int on = 0;
            if (!(words >> m >> on) || m >= rt->meshMaterialRecords.size())
                return fail("bad transparency");
            transparent.emplace_back(m, on != 0);
        } else if (word == "section") {
            section = std::make_shared<qrnsg::Section>();
            words >> section->point[0] >> section->point[1] >> section->point[2] >>
                section->normal[0] >> section->normal[1] >> section->normal[2] >> flipped >>
                capped >> capMode >> hatched >> profile;
            if (!words || !(section->normal.length() > 0.0f))
                return fail("bad section");
            section->capped = capped;
            section->showProfile = profile;
        } else if (word == "explode") {
            if (!(words >> explode) || explode < 0 || explode > 64)
                return fail("bad explode level");
        } else if (word == "end") {
            ended = true;
            break;
        } else if (!word.empty()) {
            return fail("unknown entry '" + word.substr(0, 40) + "'");
        }
    }
    if (!header || !ended || !hasCamera || !nodesOk) {
        error = path + ": not a whole qrnview scene state (" +
                (header ? "it stops short" : "empty") + ")";
        return false;
    }

    // All of it fits: put it in force.
    m_cameraTarget = camera;
    if (!m_animated)
        *renderer->camera = camera;
    for (const Part& p : parts) {
        auto& state = stateOf(*rt, p.slot.kind);
        state.setVisible(p.slot.id, p.shown);
        if (p.material >= 0)
            state.materials.set(p.slot.id, p.material);
    }
    for (const auto& [m, on] : transparent)
        rt->meshMaterialRecords[m].bytes[0] = static_cast<unsigned char>(
            on ? (rt->meshMaterialRecords[m].bytes[0] | qrnsg::MeshMaterialRecord::TRANSPARENT)
               : (rt->meshMaterialRecords[m].bytes[0] & ~qrnsg::MeshMaterialRecord::TRANSPARENT));
    rt->sortMeshDrawOrder();
    // The parts where they stood before the cut is made: its quad covers them.
    if (m_explode && m_animated)
        m_explode->animateTo(explode);
    else if (m_explode)
        m_explode->show(explode);
    if (clipping) {
        clipping->flipped = false;
        clipping->capMode = capMode == qrngl::SCClipping::SINGLE ? qrngl::SCClipping::SINGLE
                                                                 : qrngl::SCClipping::PART_COLOURS;
        clipping->hatched = hatched;
    }
    qrngl::SectionStateActivator(renderer).execute(section);
    if (clipping && section && flipped) {
        // Made as saved, then flipped back to the half that was kept.
        clipping->flipped = false;
        const auto& p = clipping->planes.front();
        clipping->planes.front() = qrnmath::PlaneUtils::fromPointNormal(
            qrnmath::PlaneUtils::pointOn(p), -qrnmath::PlaneUtils::normal(p));
        clipping->flipped = true;
    }
    if (renderer->pickCanvas)
        renderer->pickCanvas->Invalidate();
    renderer->update();
    return true;
}

} // namespace qrnviewer
