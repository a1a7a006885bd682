#pragma once

#include "qrngl/ClickTracker.h"
#include "qrngl/IFilter.h"
#include "qrngl/IMeasureManipulator.h"
#include "qrngl/IRenderer.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/qrngl_export.h"
#include "qrnmath/Tuple.h"

#include <memory>

namespace qrngl {

// Quick measuring by clicks on the model: in point mode (1) each click leaves the point's
// coordinates, in distance mode (2) the first click shows a point and the second leaves the
// distance between the two. A click on a vertex takes the vertex, on a cut part's cap the
// point of the cut. A drag never measures; a measuring click is consumed.
class QRNGL_EXPORT MeasureManipulator : public IMeasureManipulator {
public:
    enum : short { POINT_MODE = 1, DISTANCE_MODE = 2 };
    enum : int { PICK_SIZE = 6 };

    MeasureManipulator(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<Cursor> cursor,
                       std::shared_ptr<qrn::IUpdater> updater);
    ~MeasureManipulator() override;
    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    FrameStatus mouseWheel(unsigned int flags, int delta, float factor) override;
    // Escape forgets a pending first point.
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    FrameStatus keyUp(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    void init() override;
    bool setCursor() override;
    FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                  int y) override;
    void setFilter(const short& filter) override;
    // Point (1) or distance (2) mode registers the tool's renderers; 0 takes them out.
    void setMode(const short& mode) override;
    void clearAll() override;
    bool pending() const { return m_pending; }

private:
    // The point under a window point and the surface's normal there; false over nothing.
    bool getPointInWorld(int x, int y, qrnmath::Vec3& point, qrnmath::Vec3& normal) const;
    // No point pending, none shown.
    void reset();

    qrnmath::Vec3 m_first, m_firstNormal;
    bool m_pending = false;
    std::shared_ptr<IFilter> m_pickFilter;
    std::shared_ptr<IRendererFactory> m_factory;
    std::shared_ptr<IRenderer> m_renderer, m_pointsRenderer;
    ClickTracker m_click;
};

} // namespace qrngl
