// A renderer plug-in for the loader's tests: its factory accepts every document, makes empty
// canvases, and the library counts the factories it has handed out and not yet taken back.
#include "CanvasFactoryEntries.h"
#include "qrngl/frame/EmptyCanvas.h"

#ifdef _WIN32
#define QRNTEST_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define QRNTEST_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

int g_live = 0;

class CountingFactory : public qrngl::ICanvasFactory {
public:
    CountingFactory() { ++g_live; }
    ~CountingFactory() override { --g_live; }
    bool canRender(std::shared_ptr<qrn::IDocument>) const override { return true; }
    std::shared_ptr<qrngl::ICanvas>
    createCanvas(std::shared_ptr<qrngl::IRenderContext> context,
                 std::shared_ptr<qrn::IDocument> document) override {
        return std::make_shared<qrngl::EmptyCanvas>(context, document);
    }
    std::shared_ptr<qrngl::IPickCanvas> createPickCanvas(std::shared_ptr<qrngl::IRenderContext>,
                                                         std::shared_ptr<qrn::IDocument>) override {
        return nullptr;
    }
    std::shared_ptr<qrnsg::IActionFunctor>
    createOptimizer(std::shared_ptr<qrnsg::IFactory>, std::shared_ptr<qrn::IDocument>) override {
        return nullptr;
    }
    std::shared_ptr<qrngl::ICanvas> createPrintCanvas(std::shared_ptr<qrngl::IRenderContext>,
                                                      std::shared_ptr<qrn::IDocument>) override {
        return nullptr;
    }
};

} // namespace

QRNTEST_PLUGIN_EXPORT long create(void** object) {
    return qrnplugins::createFactory<CountingFactory>(object);
}

QRNTEST_PLUGIN_EXPORT long destroy(void** object) {
    return qrnplugins::destroyFactory(object);
}

QRNTEST_PLUGIN_EXPORT int qrntest_live_factories() {
    return g_live;
}
