#include "qrngl/interaction/NXEventInterpreter.h"

#include "qrngl/IManipulator.h"

namespace qrngl {

NXEventInterpreter::NXEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

NXEventInterpreter::~NXEventInterpreter() = default;

bool NXEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                   int const& dx, int const& dy, Operation& result) {
    return interpretMiddleRotatePan(flags, KEY_RBUTTON, result) ||
           QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

} // namespace qrngl
