// qrnview: the viewer host. Reads a CAD file (or makes the built-in demo assembly), fills a
// document and draws it.
#include "qrnviewer/DocumentBuilder.h"
#include "qrnviewer/Options.h"
#include "qrnviewer/Snapshot.h"
#include "qrnviewer/StandardView.h"
#include "qrnviewer/TerminalStatus.h"
#include "qrnviewer/occt/DemoAssembly.h"
#include "qrnviewer/occt/ModelReader.h"

#include "qrngl/SCRenderer.h"

#include <cstdio>

int main(int argc, char** argv) {
    qrnviewer::Options options;
    std::string error;
    if (!qrnviewer::Options::parse(argc, argv, options, error)) {
        std::fprintf(stderr, "qrnview: %s\n%s", error.c_str(), qrnviewer::Options::usage().c_str());
        return 2;
    }
    if (options.help) {
        std::printf("%s", qrnviewer::Options::usage().c_str());
        return 0;
    }
    if (options.snapshot.empty()) {
        std::fprintf(stderr, "qrnview: give --snapshot OUT.png to draw off screen\n%s",
                     qrnviewer::Options::usage().c_str());
        return 2;
    }

    qrnviewer::TerminalStatus status;
    qrnviewer::ModelData model;
    if (options.model.empty()) {
        if (!qrnviewer::DemoAssembly::model(model, error, &status)) {
            status.endProgress();
            std::fprintf(stderr, "qrnview: cannot make the demo assembly: %s\n", error.c_str());
            return 1;
        }
    } else if (!qrnviewer::ModelReader::read(options.model, model, error, &status)) {
        status.endProgress();
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    auto document = qrnviewer::DocumentBuilder::build(model);
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    qrnviewer::StandardView::apply(options.view, model.bbox(), renderer->camera);

    if (!qrnviewer::Snapshot::write(document, options.width, options.height, options.snapshot,
                                    error)) {
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    std::printf("qrnview: wrote %s (%ux%u, %zu triangles in %zu instances)\n",
                options.snapshot.c_str(), options.width, options.height, model.triangleCount(),
                model.instanceCount());
    return 0;
}
