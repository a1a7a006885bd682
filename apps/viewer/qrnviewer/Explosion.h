#pragma once

#include "qrn/IDocument.h"
#include "qrn/IStatusManager.h"
#include "qrnmath/Tuple.h"
#include "qrnsgutils/ExplosionGraph.h"

#include <functional>
#include <memory>
#include <vector>

namespace qrnviewer {

// The viewer's exploded view: the assembly laid out once by the explode iterator, then shown
// level by level (each press one level further, the press after the last puts it together
// again), each change animated from where the parts stand to where they go.
class Explosion {
public:
    enum : int { FRAMES = 12 }; // animation steps of one change

    explicit Explosion(std::shared_ptr<qrn::IDocument> document);

    // The next level (back to assembled after the deepest); progress of the layout goes to
    // the status manager. False when the model has nothing to explode.
    bool next(qrn::IStatusManager* status);
    // Every level at once, without animation (a snapshot's --explode).
    bool explodeFully(qrn::IStatusManager* status);
    // Shows that many levels at once (0: assembled), without animation, or moving there over
    // the next animation steps.
    void show(int level);
    void animateTo(int level);
    // Forgets the levels shown, the parts having been put back by someone else (the home
    // view).
    void assembled();
    // Slow at both ends: the share of a move done at a share t of its time.
    static float ease(float t) { return t * t * (3.0f - 2.0f * t); }
    // One animation step; false once the parts are where they go.
    bool animate();
    int level() const { return m_level; }
    int levels() const { return m_levels; }

    // Runs after every move of the parts (picks, profiles).
    void setMoved(std::function<void()> moved) { m_moved = std::move(moved); }

private:
    bool layOut(qrn::IStatusManager* status);
    std::vector<qrnmath::Vec3> target() const;
    void apply(const std::vector<qrnmath::Vec3>& own);

    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrnsgutils::ExplosionGraph> m_graph;
    std::vector<qrnmath::Vec3> m_own; // per node: its own explode translation
    std::vector<int> m_depth;         // per node: its level, -1 outside the graph
    int m_levels = 0;
    int m_level = 0;
    std::vector<qrnmath::Vec3> m_from, m_to, m_now;
    int m_frame = FRAMES;
    std::function<void()> m_moved;
};

} // namespace qrnviewer
