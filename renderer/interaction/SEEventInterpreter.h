#pragma once

#include "qrngl/interaction/QrnEventInterpreter.h"

namespace qrngl {

// Middle drag rotates, middle drag with Shift pans; everything else as the library's own.
class QRNGL_EXPORT SEEventInterpreter : public QrnEventInterpreter {
public:
    explicit SEEventInterpreter(bool is2D);
    ~SEEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;
};

} // namespace qrngl
