#include "qrnviewer/MouseStyle.h"

#include <algorithm>
#include <cctype>

namespace qrnviewer {

namespace {

struct Convention {
    const char* name;
    const char* bindings;
};

// In the order of the style numbers. Every convention also pans with left and right held
// together, zooms with a mostly vertical right drag and zooms with the wheel.
const Convention kConventions[MouseStyle::COUNT] = {
    {"Qrn", "left: the chosen operation; middle: spin; Ctrl+middle: pan"},
    {"CATIA", "left: the chosen operation; middle: pan; middle+right: rotate; "
              "middle held, right clicked, then middle: zoom"},
    {"ProE", "left: the chosen operation; middle: rotate; Shift+middle or Ctrl+middle: pan"},
    {"Inventor", "left: the chosen operation, rotate while F4 is held; middle: pan"},
    {"NX", "left: the chosen operation; middle: rotate; middle+right or Ctrl+middle: pan"},
    {"SW", "left: the chosen operation; middle: rotate; Ctrl+middle: pan"},
    {"SE", "left: the chosen operation; middle: rotate; Shift+middle or Ctrl+middle: pan"},
};

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

} // namespace

const char* MouseStyle::name(int style) {
    return kConventions[style >= 0 && style < COUNT ? style : 0].name;
}

const char* MouseStyle::bindings(int style) {
    return kConventions[style >= 0 && style < COUNT ? style : 0].bindings;
}

bool MouseStyle::parse(const std::string& text, int& style) {
    if (text.size() == 1 && text[0] >= '0' && text[0] < '0' + COUNT) {
        style = text[0] - '0';
        return true;
    }
    for (int i = 0; i < COUNT; ++i)
        if (lower(text) == lower(kConventions[i].name)) {
            style = i;
            return true;
        }
    return false;
}

std::string MouseStyle::list() {
    std::string list;
    for (const auto& c : kConventions)
        list += (list.empty() ? "" : ", ") + std::string(c.name);
    return list;
}

} // namespace qrnviewer
