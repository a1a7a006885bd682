#pragma once
// A document's frame and pick canvases on one context, sized and registered as the viewer has
// them, given back with the context current when they go, and the document closed then.
#include "qrn/Document.h"
#include "qrngl/CameraHelper.h"
#include "qrngl/ICanvas.h"
#include "qrngl/IPickCanvas.h"
#include "qrngl/SCRenderer.h"
#include "qrnviewer/RendererPlugins.h"

#include <gtest/gtest.h>

#include <memory>

namespace viewertest {

struct ViewerCanvases {
    ViewerCanvases(const std::shared_ptr<qrn::Document>& document,
                   std::shared_ptr<qrngl::IRenderContext> on, unsigned int width,
                   unsigned int height)
        : document(document), context(std::move(on)),
          renderer(document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)) {
        qrngl::CameraHelper::setViewport(width, height, renderer->camera);
        auto factory = qrnviewer::RendererPlugins::shared().factoryFor(document);
        if (factory) {
            canvas = factory->createCanvas(context, document);
            picks = factory->createPickCanvas(context, document);
        }
        made = canvas && picks && picks->OnCreate() && canvas->OnCreate();
        EXPECT_TRUE(made) << "the plug-in made no canvases";
        if (!made)
            return;
        canvas->OnSize(0, 0, width, height);
        picks->OnSize(0, 0, width, height);
        renderer->pickCanvas = picks;
    }
    ~ViewerCanvases() {
        context->activate();
        if (picks)
            picks->OnDestroy();
        if (canvas)
            canvas->OnDestroy();
        renderer->pickCanvas.reset();
        document->close();
    }
    ViewerCanvases(const ViewerCanvases&) = delete;
    ViewerCanvases& operator=(const ViewerCanvases&) = delete;

    std::shared_ptr<qrn::Document> document;
    std::shared_ptr<qrngl::IRenderContext> context;
    std::shared_ptr<qrngl::SCRenderer> renderer;
    std::shared_ptr<qrngl::ICanvas> canvas;
    std::shared_ptr<qrngl::IPickCanvas> picks;
    bool made = false;
};

} // namespace viewertest
