#pragma once

#include "qrngl/interaction/QrnEventInterpreter.h"

namespace qrngl {

// Middle drag pans, middle and right together rotate. Pressing the right button while the
// middle one is held latches zoom: middle drags then zoom until the middle button is released.
class QRNGL_EXPORT CATIAEventInterpreter : public QrnEventInterpreter {
public:
    explicit CATIAEventInterpreter(bool is2D);
    ~CATIAEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;
    // Sets the latch at a press with middle and right held; returns the latch.
    bool pre(unsigned int const& flags, Operation const& requested, int const& x,
             int const& y) override;
    // Clears the latch; true when it was set.
    bool post(unsigned int const& flags, Operation const& requested, int const& x,
              int const& y) override;

    bool isZoomLatched() const { return m_zoomLatch; }

private:
    bool m_zoomLatch = false;
};

} // namespace qrngl
