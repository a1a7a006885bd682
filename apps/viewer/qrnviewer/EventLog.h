#pragma once

#include "qrnviewer/InputEvent.h"

#include <istream>
#include <string>
#include <vector>

namespace qrnviewer {

// Input events as text, one a line, so that a session can be recorded and played back:
//
//     # time kind button flags x y delta key
//     0    keydown -     0x00 0   0   0 82
//     40   down    left  0x01 160 120 0 0
//     70   move    -     0x01 175 120 0 0
//
// time: milliseconds, never decreasing; kind: down, up, move, wheel, keydown, keyup, or wait
// (nothing but time passes); button: left, middle, right, or - where none belongs; flags: the
// MK_ key-state bits (decimal or 0x hex); delta: wheel rotation, 120 a notch; key: a Windows
// virtual-key code. Blank lines and lines starting with # are skipped.
class EventLog {
public:
    static const char* header();
    static std::string format(const InputEvent& event);
    // False with the reason in error (naming the line) at the first line that does not parse.
    static bool parse(std::istream& in, std::vector<InputEvent>& events, std::string& error);
    static bool read(const std::string& path, std::vector<InputEvent>& events, std::string& error);

private:
    static bool parseLine(const std::string& line, InputEvent& event, std::string& error);
};

} // namespace qrnviewer
