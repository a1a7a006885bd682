#pragma once

#include "qrngl/ITexture.h"
#include "qrnglutils/qrnglutils_export.h"

#include <cstdint>
#include <vector>

namespace qrnglutils {

// An RGBA image uploaded as a mipmapped, repeating 2D texture on its first bind.
class QRNGLUTILS_EXPORT Texture2D : public qrngl::ITexture {
public:
    Texture2D(unsigned int width, unsigned int height, std::vector<std::uint8_t> rgba);
    void bind() const override;
    unsigned int name() const { return m_name; }

private:
    unsigned int m_width;
    unsigned int m_height;
    mutable std::vector<std::uint8_t> m_rgba;
    mutable unsigned int m_name = 0;
};

} // namespace qrnglutils
