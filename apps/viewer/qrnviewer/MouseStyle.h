#pragma once

#include <string>

namespace qrnviewer {

// The mouse conventions of the renderer settings (SCRenderer::mouseStyle), by the names of
// their interpreters, with what each does for the user's help.
class MouseStyle {
public:
    enum : int { COUNT = 7 };

    // "Qrn", "CATIA", "ProE", "Inventor", "NX", "SW", "SE"; "Qrn" for a number out of range.
    static const char* name(int style);
    // The drags of the convention, one line.
    static const char* bindings(int style);
    // A number 0 to 6 or a name, any case; false for anything else.
    static bool parse(const std::string& text, int& style);
    // The names, comma-separated, for messages.
    static std::string list();
};

} // namespace qrnviewer
