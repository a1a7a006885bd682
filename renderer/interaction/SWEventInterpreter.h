#pragma once

#include "qrngl/interaction/QrnEventInterpreter.h"

namespace qrngl {

// Middle drag rotates, middle drag with Ctrl pans; everything else as the library's own.
class QRNGL_EXPORT SWEventInterpreter : public QrnEventInterpreter {
public:
    explicit SWEventInterpreter(bool is2D);
    ~SWEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;
};

} // namespace qrngl
