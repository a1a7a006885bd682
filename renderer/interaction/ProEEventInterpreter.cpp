#include "qrngl/interaction/ProEEventInterpreter.h"

#include "qrngl/IManipulator.h"

namespace qrngl {

ProEEventInterpreter::ProEEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

ProEEventInterpreter::~ProEEventInterpreter() = default;

bool ProEEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                     int const& dx, int const& dy, Operation& result) {
    return interpretMiddleRotatePan(flags, KEY_SHIFT, result) ||
           QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

} // namespace qrngl
