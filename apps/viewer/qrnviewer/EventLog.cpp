#include "qrnviewer/EventLog.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace qrnviewer {

namespace {

struct KindName {
    const char* name;
    InputEvent::Kind kind;
    bool touch;
};
const KindName kKinds[] = {
    {"down", InputEvent::BUTTON_DOWN, false}, {"up", InputEvent::BUTTON_UP, false},
    {"move", InputEvent::MOTION, false},      {"wheel", InputEvent::WHEEL, false},
    {"keydown", InputEvent::KEY_DOWN, false}, {"keyup", InputEvent::KEY_UP, false},
    {"wait", InputEvent::WAIT, false},        {"touchdown", InputEvent::BUTTON_DOWN, true},
    {"touchup", InputEvent::BUTTON_UP, true}, {"touchmove", InputEvent::MOTION, true},
    {"pan", InputEvent::PAN, false},          {"zoom", InputEvent::ZOOM, false},
    {"rotate", InputEvent::ROTATE, false},    {"twofingertap", InputEvent::TWO_FINGER_TAP, false},
};
const char* const kButtons[] = {"left", "middle", "right"};

bool isButtonEvent(InputEvent::Kind kind) {
    return kind == InputEvent::BUTTON_DOWN || kind == InputEvent::BUTTON_UP;
}

// Only button and motion messages come from touch.
bool canBeTouch(InputEvent::Kind kind) {
    return isButtonEvent(kind) || kind == InputEvent::MOTION;
}

const char* kindName(const InputEvent& e) {
    const bool touch = e.touch && canBeTouch(e.kind);
    for (const auto& k : kKinds)
        if (k.kind == e.kind && k.touch == touch)
            return k.name;
    return "?";
}

// Whole-token integers only: "12x" is a mistake, not 12. Decimal, or hexadecimal after 0x (the
// flags are written so); a leading zero is no octal.
bool toLong(const std::string& text, long long min, long long max, long long& value) {
    if (text.empty())
        return false;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    errno = 0;
    char* end = nullptr;
    const long long v = std::strtoll(text.c_str(), &end, hex ? 16 : 10);
    // A NUL inside the token ends the C string early: the whole token must be read.
    if (errno != 0 || end != text.c_str() + text.size() || v < min || v > max)
        return false;
    value = v;
    return true;
}

// A field as an error quotes it: long ones cut short.
std::string shortField(const std::string& field) {
    return "'" + (field.size() > 40 ? field.substr(0, 40) + "..." : field) + "'";
}

} // namespace

const char* EventLog::header() {
    return "# qrnview event log\n# time kind button flags x y delta key\n";
}

std::string EventLog::format(const InputEvent& e) {
    const bool button = isButtonEvent(e.kind);
    char line[160];
    std::snprintf(line, sizeof line, "%llu %s %s 0x%02x %d %d %d %u",
                  static_cast<unsigned long long>(e.time), kindName(e),
                  button ? kButtons[e.button] : "-", e.flags, e.x, e.y, e.delta, e.key);
    return line;
}

bool EventLog::parseLine(const std::string& line, InputEvent& e, std::string& error) {
    std::istringstream in(line);
    std::string f[8], extra;
    for (auto& field : f)
        if (!(in >> field)) {
            error = "expected 8 fields: time kind button flags x y delta key";
            return false;
        }
    if (in >> extra) {
        error = "more than 8 fields";
        return false;
    }
    long long v = 0;
    // Times run from the log's start, at most a day: a replay takes bounded time whatever
    // runs in it (a spin steps on every timer tick of a wait).
    if (!toLong(f[0], 0, EventLog::MAX_TIME, v)) {
        error = "bad time " + shortField(f[0]) + " (milliseconds from the start, at most a day)";
        return false;
    }
    e.time = static_cast<std::uint64_t>(v);
    const KindName* kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                        [&](const KindName& k) { return f[1] == k.name; });
    if (kind == std::end(kKinds)) {
        error = "unknown kind " + shortField(f[1]);
        return false;
    }
    e.kind = kind->kind;
    e.touch = kind->touch;
    int button = 0;
    while (button < 3 && f[2] != kButtons[button])
        ++button;
    if (button == 3 && (isButtonEvent(e.kind) || f[2] != "-")) {
        error = "bad button " + shortField(f[2]);
        return false;
    }
    if (!isButtonEvent(e.kind) && f[2] != "-") {
        error = std::string("a ") + kind->name + " has no button (" + f[2] + " given)";
        return false;
    }
    e.button = static_cast<qrngl::MouseButton>(button == 3 ? 0 : button);
    const struct {
        const std::string& text;
        long long min, max;
        const char* what;
    } numbers[] = {{f[3], 0, 0xFFFF, "flags"},
                   {f[4], -100000, 100000, "x"},
                   {f[5], -100000, 100000, "y"},
                   {f[6], -1000000, 1000000, "delta"},
                   {f[7], 0, 255, "key"}};
    long long n[5] = {};
    for (int i = 0; i < 5; ++i)
        if (!toLong(numbers[i].text, numbers[i].min, numbers[i].max, n[i])) {
            error = std::string("bad ") + numbers[i].what + " " + shortField(numbers[i].text);
            return false;
        }
    e.flags = static_cast<unsigned int>(n[0]);
    e.x = static_cast<int>(n[1]);
    e.y = static_cast<int>(n[2]);
    e.delta = static_cast<int>(n[3]);
    e.key = static_cast<unsigned int>(n[4]);
    return true;
}

bool EventLog::parse(std::istream& in, std::vector<InputEvent>& events, std::string& error) {
    std::vector<InputEvent> parsed;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        // An editor's UTF-8 byte-order mark is no part of the first line.
        if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
            line.erase(0, 3);
        const auto first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '#')
            continue;
        InputEvent e;
        std::string reason;
        if (!parseLine(line, e, reason)) {
            error = "line " + std::to_string(number) + ": " + reason;
            return false;
        }
        if (!parsed.empty() && e.time < parsed.back().time) {
            error = "line " + std::to_string(number) + ": time goes back";
            return false;
        }
        parsed.push_back(e);
    }
    events = std::move(parsed);
    return true;
}

bool EventLog::read(const std::string& path, std::vector<InputEvent>& events, std::string& error) {
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) {
        error = "cannot read event log " + path + ": it is a folder";
        return false;
    }
    std::ifstream in(path);
    if (!in) {
        error = "cannot read event log " + path + ": " + std::strerror(errno);
        return false;
    }
    if (!parse(in, events, error)) {
        error = path + ": " + error;
        return false;
    }
    return true;
}

} // namespace qrnviewer
