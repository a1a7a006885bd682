#pragma once

#include "qrn/IDocument.h"
#include "qrn/IUpdater.h"
#include "qrngl/IManipulator.h"
#include "qrngldata/qrngldata_export.h"

#include <cstdint>
#include <memory>

namespace qrngl {

// A measuring tool in the chain: what it may pick (its filter) and what it makes (its mode),
// telling an updater when views must be refreshed.
class QRNGLDATA_EXPORT IMeasureManipulator : public IManipulator {
public:
    enum : short { ORDER = 200 };
    // The filter's bits as the settings give them.
    enum : short { FILTER_POINT = 1, FILTER_EDGE = 2, FILTER_FACE = 8 };

    IMeasureManipulator(std::shared_ptr<qrn::IDocument> document, std::shared_ptr<Cursor> cursor,
                        std::shared_ptr<qrn::IUpdater> updater);
    ~IMeasureManipulator() override;
    FrameStatus mouseButtonDown(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                int y) override = 0;
    FrameStatus mouseButtonUp(FrameStatus status, unsigned int flags, MouseButton button, int x,
                              int y) override = 0;
    FrameStatus mouseMotion(unsigned int flags, int x, int y) override = 0;
    FrameStatus mouseWheel(unsigned int flags, int delta, float factor) override = 0;
    FrameStatus keyDown(FrameStatus status, unsigned int key, unsigned int,
                        unsigned int) override = 0;
    FrameStatus keyUp(FrameStatus status, unsigned int key, unsigned int,
                      unsigned int) override = 0;
    // Back to filter 0 and mode 0.
    void init() override;
    short order() const override { return ORDER; }
    bool setCursor() override = 0;
    FrameStatus mouseButtonDblClk(FrameStatus status, unsigned int flags, MouseButton button, int x,
                                  int y) override = 0;
    virtual void setFilter(const short& filter) = 0;
    virtual void setMode(const short& mode) = 0;
    virtual void setUpdater(std::shared_ptr<qrn::IUpdater> updater);
    // Removes every measurement the tool owns.
    virtual void clearAll() = 0;

    const short& getFilter() const { return m_filter; }
    const short& getMode() const { return m_mode; }

protected:
    std::shared_ptr<qrn::IDocument> m_document;
    std::shared_ptr<qrn::IUpdater> m_updater;
    short m_filter = 0;
    short m_mode = 0;
    std::int32_t m_word = 0;
};

} // namespace qrngl
