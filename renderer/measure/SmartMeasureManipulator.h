#pragma once

#include "qrngl/ClickTracker.h"
#include "qrngl/IMeasureManipulator.h"
#include "qrngl/IRenderer.h"
#include "qrngl/IRendererFactory.h"
#include "qrngl/MeasureRT.h"
#include "qrngl/SCMeasure.h"
#include "qrngl/qrngl_export.h"
#include "qrnsgutils/EntityMeasure.h"

#include <memory>
#include <string>

namespace qrngl {

// Measures what the user picks without being told what kind of measurement is wanted: one
// entity gives its own measure (a hole's radius, an edge's length, a face's area, a vertex's
// coordinates), a second one the measure of the pair (distances with their closest points,
// angles between faces or edges). The picks are kept in the measurement component's
// selection, first to last; each measurement is a record there, shown by the measure renderer.
class QRNGL_EXPORT SmartMeasureManipulator : public IMeasureManipulator {
public:
    enum : int { PICK_SIZE = 6 };

    // Reads its filter from the settings ("Point", "Edge", "Face" of
    // Settings\Measurement).
    SmartMeasureManipulator(std::shared_ptr<qrn::IDocument> document,
                            std::shared_ptr<Cursor> cursor, std::shared_ptr<qrn::IUpdater> updater);
    ~SmartMeasureManipulator() override;
    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override;
    // A click (no drag) picks the next entity and measures.
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override;
    FrameStatus mouseWheel(unsigned int flags, int delta, float factor) override;
    // Escape forgets the picks.
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    FrameStatus keyUp(FrameStatus status, unsigned int key, unsigned int, unsigned int) override;
    void init() override;
    bool setCursor() override;
    FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                  int y) override;
    void setFilter(const short& filter) override;
    // Nonzero: measuring, its renderer registered.
    void setMode(const short& mode) override;
    // Removes every measurement that is not kept with the document.
    void clearAll() override;

    // The filter bits the settings give (0 where the key cannot be had).
    static short readFiltersFromRegistry(const std::wstring& appName);
    static short readFiltersFromRegistry();
    // The pick mask of filter bits: point 4, edge 2, face 1 (a cut part's cap with faces).
    static unsigned short pickMask(short filter);

    // The entity of the filter under a window point, as a pick; false over nothing.
    bool getPickingResult(int x, int y, EntityPick& pick) const;
    // Measures the picks of the selection by the kinds of the first two.
    void measureSelectedEntities(int x, int y, bool flag);
    // Picks two named entities and measures them (a script's or a benchmark's way).
    std::shared_ptr<MeasureRT> measurePair(unsigned int first, unsigned int second);
    // The measurement made last; null before any.
    std::shared_ptr<MeasureRT> last() const;
    // "distance", "angle", "radius", "length", "area", "point".
    static const char* kindName(MeasureRT::MType type);

protected:
    virtual void measureSelectedEdges(int x, int y, const EntityPick& a, const EntityPick& b,
                                      bool flag);
    virtual void measureSelectedFaceEdge(int x, int y, const EntityPick& a, const EntityPick& b,
                                         bool flag);
    virtual void measureSelectedFaces(int x, int y, const EntityPick& a, const EntityPick& b,
                                      bool flag);
    virtual void measureSelectedPointEdge(int x, int y, const EntityPick& a, const EntityPick& b,
                                          bool flag);
    virtual void measureSelectedPointFace(int x, int y, const EntityPick& a, const EntityPick& b,
                                          bool flag);
    virtual void measureP2P(int x, int y, bool flag);
    virtual void measureSingleEntity(int x, int y, const EntityPick& pick, bool flag);

private:
    // One cell of the table for the kinds as they stand.
    void dispatch(int x, int y, bool flag);
    // A distance between two picks, with the angle between them when they are not parallel.
    void measureDistance(const EntityPick& a, const EntityPick& b, bool withAngle);
    qrnsgutils::WorldEntity world(const EntityPick& pick) const;
    std::shared_ptr<MeasureRT> store(std::shared_ptr<MeasureRT> record);

    std::shared_ptr<IRendererFactory> m_factory;
    std::shared_ptr<IRenderer> m_renderer;
    unsigned int m_single = 0; // the record of the first pick alone, replaced by the pair's
    unsigned int m_last = 0;
    ClickTracker m_click;
};

} // namespace qrngl
