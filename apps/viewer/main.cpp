// qrnview: the viewer host. Draws a model (for now the built-in scene) off screen into a PNG.
#include "qrnviewer/BuiltinScene.h"
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/Snapshot.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void usage(std::FILE* out) {
    std::fprintf(out, "usage: qrnview --snapshot OUT.png [--size WxH]\n"
                      "  Draws the built-in scene and writes the frame as a PNG.\n");
}

bool parseSize(const std::string& s, unsigned int& w, unsigned int& h) {
    unsigned long a = 0, b = 0;
    char x = 0, extra = 0;
    if (std::sscanf(s.c_str(), "%lu%c%lu%c", &a, &x, &b, &extra) != 3 || (x != 'x' && x != 'X'))
        return false;
    if (a == 0 || b == 0 || a > 16384 || b > 16384)
        return false;
    w = static_cast<unsigned int>(a);
    h = static_cast<unsigned int>(b);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::string snapshot;
    unsigned int width = 1024, height = 768;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            usage(stdout);
            return 0;
        } else if (arg == "--snapshot" && i + 1 < argc) {
            snapshot = argv[++i];
        } else if (arg == "--size" && i + 1 < argc) {
            if (!parseSize(argv[++i], width, height)) {
                std::fprintf(stderr, "qrnview: bad size '%s' (expected WxH, e.g. 1024x768)\n",
                             argv[i]);
                return 2;
            }
        } else {
            std::fprintf(stderr, "qrnview: unexpected argument '%s'\n", arg.c_str());
            usage(stderr);
            return 2;
        }
    }
    if (snapshot.empty()) {
        usage(stderr);
        return 2;
    }
    auto document = qrnviewer::DocumentBuilder::build(qrnviewer::BuiltinScene::make());
    std::string error;
    if (!qrnviewer::Snapshot::write(document, width, height, snapshot, error)) {
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    std::printf("qrnview: wrote %s (%ux%u)\n", snapshot.c_str(), width, height);
    return 0;
}
