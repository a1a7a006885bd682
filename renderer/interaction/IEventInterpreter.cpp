#include "qrngl/interaction/IEventInterpreter.h"

namespace qrngl {

IEventInterpreter::IEventInterpreter(bool is2D) : m_is2D(is2D) {}

IEventInterpreter::~IEventInterpreter() = default;

bool IEventInterpreter::pre(unsigned int const&, Operation const&, int const&, int const&) {
    return false;
}

bool IEventInterpreter::post(unsigned int const&, Operation const&, int const&, int const&) {
    return false;
}

} // namespace qrngl
