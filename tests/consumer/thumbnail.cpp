// thumbnail MODEL OUT.png: a CAD file drawn off screen, as a host embeds the libraries.
#include <qrngl/CameraHelper.h>
#include <qrngl/SCRenderer.h>
#include <qrngl/frame/Canvas.h>
#include <qrngl/frame/PrintCanvas.h>
#include <qrngl/frame/RCBitmap.h>
#include <qrnimage/Image.h>
#include <qrnimport/DocumentBuilder.h>
#include <qrnimport/ModelReader.h>
#include <qrnimport/StandardView.h>

#include <cstdio>
#include <cstring>
#include <memory>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: thumbnail MODEL OUT.png\n");
        return 2;
    }
    const unsigned int width = 320, height = 240;
    qrnimport::ModelData model;
    std::string error;
    if (!qrnimport::ModelReader::read(argv[1], model, error)) {
        std::fprintf(stderr, "thumbnail: %s\n", error.c_str());
        return 1;
    }
    auto document = qrnimport::DocumentBuilder::build(model);
    auto camera = document->get<qrngl::SCRenderer>(qrnsg::SCHEMA_RENDERER)->camera;
    qrngl::CameraHelper::setViewport(width, height, camera);
    qrnimport::StandardView::apply("iso", model.extent(), camera);

    auto context = std::make_shared<qrngl::RCBitmap>(width, height);
    if (!context->create()) {
        std::fprintf(stderr, "thumbnail: no off-screen OpenGL context\n");
        return 1;
    }
    auto frame = std::make_shared<qrngl::Canvas>(context, document);
    qrngl::PrintCanvas print(context, document, frame);
    print.OnCreate();
    print.OnSize(0, 0, width, height);
    print.OnDraw();
    qrnimage::Image image(width, height);
    const bool drawn = print.pixels().size() == std::size_t(width) * height * 4;
    if (drawn)
        std::memcpy(image.pixel(0, 0), print.pixels().data(), print.pixels().size());
    print.OnDestroy();
    context->destroy();
    if (!drawn || !image.savePng(argv[2], &error)) {
        std::fprintf(stderr, "thumbnail: %s\n", drawn ? error.c_str() : "nothing drawn");
        return 1;
    }
    // What the picture shows: pixels that are not the background.
    std::size_t modelPixels = 0;
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x)
            modelPixels += std::memcmp(image.pixel(x, y), image.pixel(0, 0), 3) != 0 ? 1 : 0;
    std::printf("thumbnail: wrote %s, %ux%u, %zu triangles, %.0f%% of it the model\n", argv[2],
                width, height, model.triangleCount(), 100.0 * modelPixels / (width * height));
    return 0;
}
