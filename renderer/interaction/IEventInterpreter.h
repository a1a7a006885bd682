#pragma once

#include "qrngl/qrngl_export.h"

namespace qrngl {

// Turns the buttons and keys held during a drag, its motion and the operation the user chose for
// the left button into the camera operation of one motion step; one subclass per mouse
// convention.
class QRNGL_EXPORT IEventInterpreter {
public:
    // Some values combine bits (BOXSELECT = ROTATE|NONE, NORMALVIEW = ZOOMBOX|NONE), so that
    // availability is tested bit-wise. The fixed underlying type keeps a number read from the
    // settings a valid value whatever it is.
    enum Operation : unsigned int {
        NONE = 1,
        ROTATE = 2,
        BOXSELECT = 3,
        PAN = 4,
        ZOOM = 8,
        ZOOMBOX = 16,
        NORMALVIEW = 17,
        SPIN = 32
    };
    enum : unsigned int { ALL_OPERATIONS = 0xFFFFFFFFu };

    // is2D: the host is the drawing-sheet viewer, where some paths refuse rotations.
    explicit IEventInterpreter(bool is2D);
    virtual ~IEventInterpreter();

    // flags: the key-state flags of the motion event; dx, dy: motion since the previous event,
    // y downwards. On true, result is the operation for this step; on false it is untouched.
    virtual bool interpret(unsigned int const& flags, Operation const& requested, int const& dx,
                           int const& dy, Operation& result) = 0;
    // Called at every button press, before anything else is done with it.
    virtual bool pre(unsigned int const& flags, Operation const& requested, int const& x,
                     int const& y);
    // Called when the middle button is released.
    virtual bool post(unsigned int const& flags, Operation const& requested, int const& x,
                      int const& y);

    void setAvailOperations(unsigned int mask) { m_availOperations = mask; }
    unsigned int getAvailOperations() const { return m_availOperations; }
    bool is2D() const { return m_is2D; }

protected:
    // Every bit of the operation must be in the mask.
    bool isAvailable(Operation operation) const {
        return (m_availOperations & operation) == operation;
    }

private:
    unsigned int m_availOperations = ALL_OPERATIONS;
    bool m_is2D;
};

} // namespace qrngl
