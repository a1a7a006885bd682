#pragma once

#include "qrngl/interaction/QrnEventInterpreter.h"

namespace qrngl {

// Middle drag pans; a left drag rotates while F4 is held; a zoom box starts without waiting
// for motion. Everything else as the library's own.
class QRNGL_EXPORT InventorEventInterpreter : public QrnEventInterpreter {
public:
    explicit InventorEventInterpreter(bool is2D);
    ~InventorEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;
};

} // namespace qrngl
