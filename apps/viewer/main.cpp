// qrnview: the viewer host. Reads a CAD file (or makes the built-in demo assembly), fills a
// document and shows it in a window, or draws it off screen into a PNG.
#include "qrnimport/DemoAssembly.h"
#include "qrnimport/DocumentBuilder.h"
#include "qrnimport/ModelReader.h"
#include "qrnimport/StandardView.h"
#include "qrnviewer/EventLog.h"
#include "qrnviewer/EventRouter.h"
#include "qrnviewer/Measuring.h"
#include "qrnviewer/Options.h"
#include "qrnviewer/PmiDisplay.h"
#include "qrnviewer/RendererPlugins.h"
#include "qrnviewer/Replay.h"
#include "qrnviewer/SceneState.h"
#include "qrnviewer/Snapshot.h"
#include "qrnviewer/TerminalStatus.h"
#include "qrnviewer/ViewerWindow.h"

#include "qrngl/CameraHelper.h"
#include "qrngl/SCRenderer.h"
#include "qrngl/frame/RendererFactory.h"
#include "qrngl/measure/MeasureRenderer.h"
#include "qrngl/picking/SelectManipulator.h"
#include "qrngl/picking/SelectionRenderer.h"
#include "qrnviewer/EntityText.h"

#include "qrnglutils/ViewActivator.h"
#include "qrnplatform/Environment.h"
#include "qrnplatform/Settings.h"
#include "qrnplatform/Text.h"
#include "qrnsg/EntityNames.h"
#include "qrnsg/SCView.h"

#include <cstdio>
#include <filesystem>
#include <memory>

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
    // --pick alone names what is there without a window or a picture.
    const bool window =
        options.snapshot.empty() && options.picks.empty() && options.measure.empty();
    std::string reason;
    if (window && !qrnviewer::ViewerWindow::displayAvailable(reason)) {
        std::fprintf(stderr,
                     "qrnview: no display to open a window on (%s); give --snapshot OUT.png to "
                     "draw off screen\n",
                     reason.c_str());
        return 2;
    }
    const std::wstring damage = qrnplatform::Settings::damage();
    if (!damage.empty())
        std::fprintf(stderr,
                     "qrnview: warning: the settings file %ls; defaults stand in for what "
                     "it cannot give\n",
                     damage.c_str());
    std::vector<qrnviewer::InputEvent> events;
    if (!options.replay.empty() && !qrnviewer::EventLog::read(options.replay, events, error)) {
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    if (!options.replay.empty() && events.empty())
        std::printf("qrnview: %s holds no events: nothing replayed\n", options.replay.c_str());

    qrnviewer::TerminalStatus status;
    qrnimport::ModelData model;
    qrnimport::ModelReader::Options reading;
    reading.meshThreads = options.meshThreads;
    reading.timeLimit = options.timeLimit;
    if (options.model.empty()) {
        if (!qrnimport::DemoAssembly::model(model, error, &status)) {
            status.endProgress();
            std::fprintf(stderr, "qrnview: cannot make the demo assembly: %s\n", error.c_str());
            return 1;
        }
        qrnimport::DemoAssembly::addNote(model);
    } else if (!qrnimport::ModelReader::read(options.model, reading, model, error, &status)) {
        status.endProgress();
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    // Released after the document and every canvas: both may hold objects a plug-in made.
    const qrnviewer::RendererPlugins plugins;
    // Meshes put in drawing order, cut into clusters and simplified, on as many threads as
    // meshed them.
    status.setProgress(L"preparing", 0);
    qrnimport::DocumentBuilder::Options preparation;
    preparation.threads = options.meshThreads;
    // The document takes the model's geometry: counted and measured first.
    const std::size_t triangles = model.triangleCount(), instances = model.instanceCount();
    const qrnsg::BBox extent = model.extent();
    auto document = qrnimport::DocumentBuilder::build(std::move(model), preparation);
    // The reader's and the mesher's heap, freed, is not the frame's to keep.
    qrnplatform::Environment::releaseFreedMemory();
    status.setProgress(L"preparing", 100);
    status.endProgress();
    if (!document) {
        std::fprintf(stderr, "qrnview: not enough memory to prepare %s (%zu triangles)\n",
                     options.model.empty() ? "the demo assembly" : options.model.c_str(),
                     triangles);
        return 1;
    }
    // The components hold tools and canvases that hold the document: closing it at every way
    // out gives it all back.
    struct Closer {
        std::shared_ptr<qrn::Document> document;
        ~Closer() { document->close(); }
    } closer{document};
    auto renderer = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER);
    // The fit depends on the picture's shape.
    qrngl::CameraHelper::setViewport(options.width, options.height, renderer->camera);
    // A standard orientation fitted to the model and its PMI, or a saved view of the file with
    // its own PMI.
    int savedView = -1;
    if (!qrnimport::StandardView::apply(options.view, extent, renderer->camera)) {
        auto views = document->get<qrnsg::SCView>(qrnsg::SCHEMA_VIEW);
        savedView = views ? views->find(qrnplatform::Text::fromUtf8(options.view)) : -1;
        if (savedView < 0 ||
            !qrnglutils::ViewActivator::apply(*views, savedView, renderer->camera)) {
            std::string known;
            for (const auto& n : qrnimport::StandardView::names())
                known += (known.empty() ? "" : ", ") + n;
            for (const auto& v : views ? views->views : std::vector<qrnsg::SCView::View>())
                known += ", " + qrnplatform::Text::toUtf8(v.name);
            std::fprintf(stderr, "qrnview: unknown view '%s' (known: %s)\n%s", options.view.c_str(),
                         known.c_str(), qrnviewer::Options::usage().c_str());
            return 2;
        }
    }
    qrnviewer::PmiDisplay pmi(document);
    pmi.setView(savedView);
    pmi.setShown(options.pmi);
    if (options.mouseStyle >= 0)
        renderer->mouseStyle = options.mouseStyle;
    renderer->frameBudget = qrnviewer::Options::budget(options, renderer->frameBudget);

    if (window) {
        qrnviewer::ViewerWindow::Settings settings;
        settings.width = options.width;
        settings.height = options.height;
        settings.title =
            "qrnview - " + (options.model.empty()
                                ? std::string("demo assembly")
                                : std::filesystem::path(options.model).filename().string());
        settings.replay = std::move(events);
        settings.record = options.record;
        settings.screenshot = options.screenshot;
        settings.pmi = options.pmi;
        settings.savedView = savedView;
        settings.section = options.section;
        settings.explode = options.explode;
        settings.state = options.state;
        settings.saveState = options.saveState;
        qrnviewer::ViewerWindow viewer(document, plugins);
        if (!viewer.run(settings, error)) {
            std::fprintf(stderr, "qrnview: %s\n", error.c_str());
            return 1;
        }
        return 0;
    }

    // The cut and the replay act through the tools the window would have.
    std::unique_ptr<qrnviewer::EventRouter> router;
    if (!events.empty() || options.section.axis >= 0 || options.explode || !options.state.empty() ||
        !options.saveState.empty()) {
        router = std::make_unique<qrnviewer::EventRouter>(document, nullptr, nullptr);
        router->setStateFiles(options.state, options.saveState);
        router->setMessageSink(
            [](const std::string& text) { std::printf("qrnview: %s\n", text.c_str()); });
        if (options.explode && !router->explosion().explodeFully(&status))
            std::printf("qrnview: nothing to explode: the model is one part\n");
        if (!router->section().apply(options.section, error)) {
            std::fprintf(stderr, "qrnview: %s\n", error.c_str());
            return 2;
        }
        if (!options.state.empty() &&
            !qrnviewer::SceneState(document, &router->explosion()).load(options.state, error)) {
            std::fprintf(stderr, "qrnview: %s\n", error.c_str());
            return 1;
        }
        qrnviewer::Replay::run(*router, events);
        if (!options.saveState.empty()) {
            if (!qrnviewer::SceneState(document, &router->explosion())
                     .save(options.saveState, error)) {
                std::fprintf(stderr, "qrnview: %s\n", error.c_str());
                return 1;
            }
            std::printf("qrnview: scene state saved to %s\n", options.saveState.c_str());
        }
    }
    qrnviewer::Snapshot::Settings picture;
    picture.width = options.width;
    picture.height = options.height;
    picture.multisample = options.samples > 1;
    picture.transparent = options.transparent;
    // Picks run on the picture's own context, in the initial view; what they take is drawn
    // highlighted.
    auto selection = std::make_shared<qrngl::SelectionSet>();
    bool picked = true;
    if (!options.picks.empty() || !options.measure.empty()) {
        static const char* const kinds[] = {"part", "face", "edge", "vertex", "any"};
        for (int k = 0; k < 5; ++k)
            if (options.select == kinds[k])
                selection->setMode(static_cast<qrngl::SelectionSet::Mode>(k));
        renderer->addPostRenderer(std::make_shared<qrngl::SelectionRenderer>(document, selection));
        if (!options.measure.empty())
            renderer->renderers[qrngl::SCRenderer::MEASURE_RENDERER] =
                std::make_shared<qrngl::MeasureRenderer>(
                    document, std::make_shared<qrngl::RendererFactory>());
        picture.beforeFrame = [&](const std::shared_ptr<qrngl::IRenderContext>& context,
                                  qrngl::ICanvasFactory& factory) {
            auto canvas = factory.createPickCanvas(context, document);
            if (!canvas || !canvas->OnCreate()) {
                std::fprintf(stderr, "qrnview: the renderer plug-in cannot pick this document\n");
                picked = false;
                return;
            }
            canvas->OnSize(0, 0, options.width, options.height);
            renderer->pickCanvas = canvas;
            qrngl::SelectManipulator select(document, selection, nullptr);
            for (const auto& p : options.picks) {
                const unsigned int name = select.pickAt(p.first, p.second);
                std::string what = qrnviewer::EntityText::describe(document, name);
                // A cap is the cut part's, at a point of the cut.
                qrnmath::Vec3 at;
                if (qrnsg::EntityNames::kindOf(name) == qrnsg::EntityNames::PART && router &&
                    router->section().pointOnCut(p.first, p.second, at))
                    what += "; cut at " + qrnviewer::EntityText::point(document, at);
                std::printf("qrnview: pick %d,%d: %s\n", p.first, p.second, what.c_str());
                if (name)
                    selection->add({name});
            }
            if (!options.measure.empty() &&
                !qrnviewer::Measuring::measureAt(document, options.measure[0], options.measure[1],
                                                 options.measure[2], options.measure[3]))
                picked = false;
            std::fflush(stdout);
            context->activate();
            canvas->OnDestroy();
            renderer->pickCanvas.reset();
        };
    }
    std::string how;
    if (!qrnviewer::Snapshot::write(document, picture, plugins, options.snapshot, error, &how)) {
        std::fprintf(stderr, "qrnview: %s\n", error.c_str());
        return 1;
    }
    if (!picked)
        return 1;
    if (options.snapshot.empty())
        return 0;
    std::printf("qrnview: wrote %s (%ux%u, %zu triangles in %zu instances; %s)\n",
                options.snapshot.c_str(), options.width, options.height, triangles, instances,
                how.c_str());
    return 0;
}
