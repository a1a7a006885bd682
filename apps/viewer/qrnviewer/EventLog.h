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
//     90   pan     -     0x01 175 120 0 0
//
// time: milliseconds, never decreasing; kind: down, up, move, wheel, keydown, keyup, wait
// (nothing but time passes), touchdown, touchup, touchmove (button and motion messages the
// system made from touch), or the gestures pan, zoom, rotate and twofingertap; button: left,
// middle, right, or - where none belongs; flags: the MK_ key-state bits, for gestures the GF_
// bits (1 begin, 4 end), decimal or 0x hex; x y: the pointer or the gesture's point; delta:
// wheel rotation, 120 a notch, for zoom the signed amount (negative zooms in), for rotate
// hundredths of a degree; key: a Windows virtual-key code. A pan moves from the point of the
// pan before it, or from its own where it begins. Blank lines and lines starting with # are
// skipped.
class EventLog {
public:
    // The latest time a log may give: a day, in milliseconds.
    static constexpr long long MAX_TIME = 24LL * 60 * 60 * 1000;

    static const char* header();
    static std::string format(const InputEvent& event);
    // False with the reason in error (naming the line) at the first line that does not parse.
    static bool parse(std::istream& in, std::vector<InputEvent>& events, std::string& error);
    static bool read(const std::string& path, std::vector<InputEvent>& events, std::string& error);

private:
    static bool parseLine(const std::string& line, InputEvent& event, std::string& error);
};

} // namespace qrnviewer
