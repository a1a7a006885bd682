#include "qrnviewer/Options.h"

#include "qrnimport/StandardView.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/MouseStyle.h"

#include "qrnplatform/Settings.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace qrnviewer {

namespace {

bool parseSize(const std::string& s, unsigned int& w, unsigned int& h) {
    unsigned long a = 0, b = 0;
    char x = 0, extra = 0;
    if (std::sscanf(s.c_str(), "%lu%c%lu%c", &a, &x, &b, &extra) != 3 || (x != 'x' && x != 'X'))
        return false;
    // The driver decides how large a picture can be; this only keeps the numbers sane.
    if (a == 0 || b == 0 || a > 100000 || b > 100000)
        return false;
    w = static_cast<unsigned int>(a);
    h = static_cast<unsigned int>(b);
    return true;
}

std::string viewList() {
    std::string list;
    for (const auto& n : qrnimport::StandardView::names())
        list += (list.empty() ? "" : ", ") + n;
    return list;
}

} // namespace

std::string Options::usage() {
    return "usage: qrnview [MODEL] [--snapshot OUT.png] [--size WxH] [--view VIEW]\n"
           "               [--pmi show|hide]\n"
           "               [--samples 1|4] [--transparent] [--mouse CONVENTION]\n"
           "               [--replay LOG] [--record LOG] [--pick X,Y ...] [--select KIND]\n"
           "               [--frame-budget MS] [--mesh-threads N] [--time-limit S]\n"
           "               [--section x|y|z[@OFFSET]] [--flip] [--caps part|single|off]\n"
           "               [--hatch] [--profile] [--explode] [--state FILE]\n"
           "               [--save-state FILE] [--measure X1,Y1,X2,Y2]\n"
           "  MODEL        a STEP, IGES, BREP, glTF, OBJ or STL file; without one, the\n"
           "               built-in demo assembly\n"
           "  --snapshot   draw off screen and write the frame as a PNG; without it the\n"
           "               model opens in a window (needs a display)\n"
           "  --size       frame or window size in pixels (default 1024x768); a snapshot\n"
           "               may be larger than the screen, as large as the driver allows\n"
           "  --samples    snapshot: 4 draws it multisampled (smooth edges), 1 not (default)\n"
           "  --transparent  snapshot: the background is transparent (alpha 0)\n"
           "  --view       " +
           viewList() +
           " (default iso), or the\n"
           "               name of a saved view of the model, which shows its own PMI\n"
           "  --pmi        show (default) or hide the model's PMI: dimensions, tolerance\n"
           "               frames, datums and notes, on their annotation planes\n"
           "  --mouse      mouse convention: " +
           MouseStyle::list() +
           " or 0-6 (default Qrn)\n"
           "  --replay     play an event log first (with --snapshot: the frame after it)\n"
           "  --record     write the window's input events as an event log\n"
           "  --pick       name what lies at window pixel X,Y of the initial view (origin top\n"
           "               left; repeatable); with --snapshot the picked entities are\n"
           "               highlighted in the picture\n"
           "  --select     what --pick takes: part, face, edge, vertex or any (default any:\n"
           "               edges and vertices near the pixel before the face under it)\n"
           "  --measure    measure between the entities at two window pixels of the initial\n"
           "               view (vertices, edges, faces) and print it; with --snapshot the\n"
           "               label is in the picture\n"
           "  --frame-budget  window: milliseconds a frame may take while the camera moves\n"
           "               (default 33, or FrameBudget under [Settings\\Renderer] in the\n"
           "               settings); slower models then leave their smallest parts out and\n"
           "               draw simplified meshes until the mouse is released; 0: never\n"
           "  --mesh-threads  threads that mesh and prepare the parts of a model at once\n"
           "               (default: one per core; 1: one part after another on one thread)\n"
           "  --time-limit seconds the model may take to read and mesh before the viewer\n"
           "               gives up on it (default 600; 0: no limit)\n"
           "  --section    cut the model along an axis, through its centre or OFFSET from it\n"
           "               (in the model's unit); the half towards the viewer is cut away\n"
           "  --flip       keep the other half\n"
           "  --caps       fill the cut faces of solids in each part's colour (default), in\n"
           "               one colour, or not at all\n"
           "  --hatch      cross the caps with hatching\n"
           "  --profile    draw the cut's outline\n"
           "  --explode    show the assembly exploded, every level of it\n"
           "  --state      restore a saved scene state (camera, shown parts, colours, cut,\n"
           "               exploded level) before the first frame\n"
           "  --save-state save the scene state there (after --replay; in the window, F2\n"
           "               saves it there and F3 restores --state, else that same file)\n"
           "In the window:\n" +
           EventRouter::keyHelp();
}

double Options::budget(const Options& options, double fallback) {
    if (options.frameBudget >= 0.0)
        return options.frameBudget;
    std::wstring text;
    if (!qrnplatform::Settings(L"Settings\\Renderer").readString(L"FrameBudget", text))
        return fallback;
    wchar_t* end = nullptr;
    const double ms = std::wcstod(text.c_str(), &end);
    if (text.empty() || *end != L'\0' || !(ms >= 0.0 && ms <= 10000.0)) {
        std::fprintf(stderr,
                     "qrnview: the FrameBudget setting '%ls' is no number of milliseconds "
                     "from 0 to 10000; %g is used\n",
                     text.c_str(), fallback);
        return fallback;
    }
    return ms;
}

bool Options::parse(int argc, const char* const* argv, Options& o, std::string& error) {
    bool sectionExtras = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= argc) {
                error = "missing value after " + arg;
                return false;
            }
            out = argv[++i];
            return true;
        };
        if (arg == "-h" || arg == "--help") {
            o.help = true;
        } else if (arg == "--snapshot") {
            if (!value(o.snapshot))
                return false;
        } else if (arg == "--size") {
            std::string size;
            if (!value(size))
                return false;
            if (!parseSize(size, o.width, o.height)) {
                error = "bad size '" + size + "' (expected WxH, e.g. 1024x768)";
                return false;
            }
        } else if (arg == "--mouse") {
            std::string style;
            if (!value(style))
                return false;
            if (!MouseStyle::parse(style, o.mouseStyle)) {
                error = "unknown mouse convention '" + style + "' (known: " + MouseStyle::list() +
                        ", or 0-6)";
                return false;
            }
        } else if (arg == "--samples") {
            std::string samples;
            if (!value(samples))
                return false;
            if (samples != "1" && samples != "4") {
                error = "bad sample count '" + samples + "' (1: none, 4: multisampled)";
                return false;
            }
            o.samples = samples == "4" ? 4 : 1;
        } else if (arg == "--frame-budget") {
            std::string ms;
            if (!value(ms))
                return false;
            char* end = nullptr;
            o.frameBudget = std::strtod(ms.c_str(), &end);
            if (ms.empty() || *end != '\0' || !(o.frameBudget >= 0.0 && o.frameBudget <= 10000.0)) {
                error = "bad frame budget '" + ms +
                        "' (milliseconds, 0 to 10000; 0: always the whole model)";
                return false;
            }
        } else if (arg == "--mesh-threads") {
            std::string n;
            if (!value(n))
                return false;
            char* end = nullptr;
            const long threads = std::strtol(n.c_str(), &end, 10);
            if (n.empty() || *end != '\0' || threads < 1 || threads > 1024) {
                error = "bad thread count '" + n + "' (1 to 1024)";
                return false;
            }
            o.meshThreads = static_cast<unsigned int>(threads);
        } else if (arg == "--time-limit") {
            std::string seconds;
            if (!value(seconds))
                return false;
            char* end = nullptr;
            o.timeLimit = std::strtod(seconds.c_str(), &end);
            if (seconds.empty() || *end != '\0' || !(o.timeLimit >= 0.0 && o.timeLimit <= 1e6)) {
                error = "bad time limit '" + seconds + "' (seconds, 0 to 1000000; 0: none)";
                return false;
            }
        } else if (arg == "--transparent") {
            o.transparent = true;
        } else if (arg == "--replay") {
            if (!value(o.replay))
                return false;
            if (o.replay.empty()) {
                error = "--replay needs an event log, not an empty name";
                return false;
            }
        } else if (arg == "--record") {
            if (!value(o.record))
                return false;
        } else if (arg == "--screenshot") {
            if (!value(o.screenshot))
                return false;
        } else if (arg == "--pick") {
            std::string point;
            if (!value(point))
                return false;
            int x = 0, y = 0;
            char comma = 0, extra = 0;
            if (std::sscanf(point.c_str(), "%d%c%d%c", &x, &comma, &y, &extra) != 3 ||
                comma != ',' || x < 0 || y < 0) {
                error = "bad pick point '" + point + "' (expected X,Y in pixels, e.g. 512,384)";
                return false;
            }
            o.picks.emplace_back(x, y);
        } else if (arg == "--measure") {
            std::string points;
            if (!value(points))
                return false;
            int v[4] = {0, 0, 0, 0};
            char c[4] = {0, 0, 0, 0};
            if (std::sscanf(points.c_str(), "%d%c%d%c%d%c%d%c", &v[0], &c[0], &v[1], &c[1], &v[2],
                            &c[2], &v[3], &c[3]) != 7 ||
                c[0] != ',' || c[1] != ',' || c[2] != ',' ||
                std::min({v[0], v[1], v[2], v[3]}) < 0) {
                error = "bad measure points '" + points +
                        "' (expected X1,Y1,X2,Y2 in pixels, e.g. 400,300,600,300)";
                return false;
            }
            o.measure.assign(v, v + 4);
        } else if (arg == "--select") {
            if (!value(o.select))
                return false;
            static const char* const kinds[] = {"part", "face", "edge", "vertex", "any"};
            if (std::find(std::begin(kinds), std::end(kinds), o.select) == std::end(kinds)) {
                error = "unknown selection kind '" + o.select +
                        "' (known: part, face, edge, vertex, any)";
                return false;
            }
        } else if (arg == "--view") {
            // A name that is no standard orientation may be a saved view of the model, which
            // is known once the model is read.
            if (!value(o.view))
                return false;
        } else if (arg == "--section") {
            std::string axis;
            if (!value(axis))
                return false;
            if (!Sectioning::parseAxis(axis, o.section)) {
                error = "bad section '" + axis + "' (expected x, y or z, with @OFFSET from the " +
                        "model's centre: z@12.5)";
                return false;
            }
        } else if (arg == "--caps") {
            std::string caps;
            if (!value(caps))
                return false;
            if (!Sectioning::parseCaps(caps, o.section.caps)) {
                error = "--caps takes part, single or off, not '" + caps + "'";
                return false;
            }
            sectionExtras = true;
        } else if (arg == "--explode") {
            o.explode = true;
        } else if (arg == "--state" || arg == "--save-state") {
            std::string& file = arg == "--state" ? o.state : o.saveState;
            if (!value(file))
                return false;
            if (file.empty()) {
                error = arg + " needs a file, not an empty name";
                return false;
            }
        } else if (arg == "--flip" || arg == "--hatch" || arg == "--profile") {
            (arg == "--flip"    ? o.section.flip
             : arg == "--hatch" ? o.section.hatch
                                : o.section.profile) = true;
            sectionExtras = true;
        } else if (arg == "--pmi") {
            std::string shown;
            if (!value(shown))
                return false;
            if (shown != "show" && shown != "hide") {
                error = "--pmi takes show or hide, not '" + shown + "'";
                return false;
            }
            o.pmi = shown == "show";
        } else if (!arg.empty() && arg[0] == '-' && arg != "-") {
            error = "unknown option '" + arg + "'";
            return false;
        } else if (o.model.empty()) {
            o.model = arg;
        } else {
            error = "more than one model given ('" + o.model + "', '" + arg + "')";
            return false;
        }
    }
    if (sectionExtras && o.section.axis < 0) {
        error = "--flip, --caps, --hatch and --profile go with --section";
        return false;
    }
    if (o.snapshot.empty() && (o.samples > 1 || o.transparent)) {
        error = "--samples and --transparent go with --snapshot";
        return false;
    }
    for (const auto& p : o.picks)
        if (p.first >= static_cast<int>(o.width) || p.second >= static_cast<int>(o.height)) {
            error = "pick point " + std::to_string(p.first) + "," + std::to_string(p.second) +
                    " lies outside the " + std::to_string(o.width) + "x" +
                    std::to_string(o.height) + " view";
            return false;
        }
    for (std::size_t i = 0; i + 1 < o.measure.size(); i += 2)
        if (o.measure[i] >= static_cast<int>(o.width) ||
            o.measure[i + 1] >= static_cast<int>(o.height)) {
            error = "measure point " + std::to_string(o.measure[i]) + "," +
                    std::to_string(o.measure[i + 1]) + " lies outside the view";
            return false;
        }
    if (!o.snapshot.empty() && (!o.record.empty() || !o.screenshot.empty())) {
        error = "--record and --screenshot need the window, not --snapshot";
        return false;
    }
    return true;
}

} // namespace qrnviewer
