#pragma once

#include "qrngl/interaction/QrnEventInterpreter.h"

namespace qrngl {

// Middle drag rotates, middle and right together pan; everything else as the library's own.
class QRNGL_EXPORT NXEventInterpreter : public QrnEventInterpreter {
public:
    explicit NXEventInterpreter(bool is2D);
    ~NXEventInterpreter() override;

    bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                   int const& dy, Operation& result) override;
};

} // namespace qrngl
