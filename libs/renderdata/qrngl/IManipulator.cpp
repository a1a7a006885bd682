#include "qrngl/IManipulator.h"

namespace qrngl {

IManipulator::IManipulator(std::shared_ptr<Cursor> cursor) : m_cursor(std::move(cursor)) {}

IManipulator::~IManipulator() = default;

FrameStatus IManipulator::mouseButtonDown(FrameStatus status, unsigned int, MouseButton, int, int) {
    return status;
}

FrameStatus IManipulator::mouseButtonUp(FrameStatus status, unsigned int, MouseButton, int, int) {
    return status;
}

FrameStatus IManipulator::mouseMotion(unsigned int, int, int) {
    return UNCHANGED;
}

FrameStatus IManipulator::mouseWheel(unsigned int, int, float) {
    return UNCHANGED;
}

FrameStatus IManipulator::keyDown(FrameStatus status, unsigned int, unsigned int, unsigned int) {
    return status;
}

FrameStatus IManipulator::keyUp(FrameStatus status, unsigned int, unsigned int, unsigned int) {
    return status;
}

void IManipulator::init() {}

bool IManipulator::setCursor() {
    return false;
}

FrameStatus IManipulator::mouseButtonDblClk(FrameStatus status, unsigned int, MouseButton, int,
                                            int) {
    return status;
}

} // namespace qrngl
