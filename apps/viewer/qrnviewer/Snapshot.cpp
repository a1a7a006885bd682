#include "qrnviewer/Snapshot.h"

#include "frame/Canvas.h"
#include "frame/RCBitmap.h"
#include "qrngl/SCStripRenderer.h"
#include "qrnglutils/SceneBuilder.h"
#include "qrnimage/Image.h"

namespace qrnviewer {

bool Snapshot::write(const std::shared_ptr<qrn::IDocument>& document, unsigned int width,
                     unsigned int height, const std::string& path, std::string& error) {
    auto context = std::make_shared<qrngl::RCBitmap>(width, height);
    if (!context->create()) {
        error = "cannot create an off-screen OpenGL context";
        return false;
    }
    qrngl::Canvas canvas(context, document);
    canvas.OnCreate();
    canvas.OnSize(0, 0, width, height);
    if (auto strips = std::dynamic_pointer_cast<qrngl::SCStripRenderer>(
            document->getSchema(qrnsg::SCHEMA_STRIP_RENDERER)))
        qrnglutils::SceneBuilder::prepare(*strips);
    canvas.Invalidate();
    canvas.OnDraw();
    qrnimage::Image image = qrnimage::Image::fromBottomUpBGR(context->bits(), width, height);
    canvas.OnDestroy();
    context->destroy();
    return image.savePng(path, &error);
}

} // namespace qrnviewer
