#include "GLContext.h"

#include "qrngl/frame/RCBitmap.h"

namespace qrntest {

std::shared_ptr<qrngl::IRenderContext> makeGLContext(unsigned int width, unsigned int height) {
    return std::make_shared<qrngl::RCBitmap>(width, height);
}

const unsigned char* presentedImage(const qrngl::IRenderContext& context) {
    return dynamic_cast<const qrngl::RCBitmap&>(context).bits();
}

} // namespace qrntest
