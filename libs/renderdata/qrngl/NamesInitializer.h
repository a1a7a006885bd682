#pragma once

#include "qrngldata/qrngldata_export.h"

namespace qrngl {

// Prepares the names of one pick pass and loads each entity's name before it is drawn: onto
// the name stack in selection mode, or as the drawing colour in an id pass (the 32-bit name
// as red, green, blue and alpha bytes, most significant first).
class QRNGLDATA_EXPORT NamesInitializer {
public:
    enum Mode { SELECTION, COLOUR };
    // Selection mode resets the name stack and pushes the slot that load() replaces.
    explicit NamesInitializer(Mode mode = SELECTION);
    Mode mode() const { return m_mode; }
    void load(unsigned int name) const;
    // A fresh name for a tool's own drawable (a clip plane, a profile segment): numbered from
    // 1 in each pass, of the tool kind.
    unsigned int take() const;
    // The bytes an id pass writes for a name.
    static void toColour(unsigned int name, unsigned char rgba[4]) {
        rgba[0] = static_cast<unsigned char>(name >> 24);
        rgba[1] = static_cast<unsigned char>(name >> 16);
        rgba[2] = static_cast<unsigned char>(name >> 8);
        rgba[3] = static_cast<unsigned char>(name);
    }
    // The name an id pass wrote as a pixel's bytes.
    static unsigned int fromColour(const unsigned char rgba[4]) {
        return (static_cast<unsigned int>(rgba[0]) << 24) |
               (static_cast<unsigned int>(rgba[1]) << 16) |
               (static_cast<unsigned int>(rgba[2]) << 8) | rgba[3];
    }

private:
    Mode m_mode;
    mutable unsigned int m_taken = 0;
};

} // namespace qrngl
