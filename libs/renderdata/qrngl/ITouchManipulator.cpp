#include "qrngl/ITouchManipulator.h"

namespace qrngl {

ITouchManipulator::ITouchManipulator(std::shared_ptr<Cursor> cursor)
    : IManipulator(std::move(cursor)) {}

ITouchManipulator::~ITouchManipulator() = default;

} // namespace qrngl
