#pragma once

#include "qrngl/interaction/IEventInterpreter.h"

namespace qrngl {

// The library's own mouse convention: the left button does the requested operation, the middle
// button spins (pans with Ctrl), left and right together pan, the right button zooms with a
// mostly vertical drag. The other conventions fall back to these rules.
class QRNGL_EXPORT QrnEventInterpreter : public IEventInterpreter {
public:
    explicit QrnEventInterpreter(bool is2D);
    ~QrnEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;

protected:
    // The middle-button rules several conventions share: the middle button alone rotates,
    // with the pan modifier (a key or button flag) it pans. Rotation is refused neither in 2D
    // nor without motion. False when neither applies.
    bool interpretMiddleRotatePan(unsigned int flags, unsigned int panModifier,
                                  Operation& result) const;
};

} // namespace qrngl
