#include "qrngl/interaction/SEEventInterpreter.h"

#include "qrngl/IManipulator.h"

namespace qrngl {

SEEventInterpreter::SEEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

SEEventInterpreter::~SEEventInterpreter() = default;

bool SEEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                   int const& dx, int const& dy, Operation& result) {
    return interpretMiddleRotatePan(flags, KEY_SHIFT, result) ||
           QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

} // namespace qrngl
