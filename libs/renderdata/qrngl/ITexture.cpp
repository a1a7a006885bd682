#include "qrngl/ITexture.h"

namespace qrngl {

ITexture::~ITexture() = default;

} // namespace qrngl
