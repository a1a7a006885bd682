#include "qrngl/interaction/SWEventInterpreter.h"

#include "qrngl/IManipulator.h"

namespace qrngl {

SWEventInterpreter::SWEventInterpreter(bool is2D) : QrnEventInterpreter(is2D) {}

SWEventInterpreter::~SWEventInterpreter() = default;

bool SWEventInterpreter::interpret(unsigned int const& flags, Operation const& requested,
                                   int const& dx, int const& dy, Operation& result) {
    return interpretMiddleRotatePan(flags, KEY_CONTROL, result) ||
           QrnEventInterpreter::interpret(flags, requested, dx, dy, result);
}

} // namespace qrngl
