#pragma once

#include "qrnimage/qrnimage_export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qrnimage {

// An RGBA image, 8 bits a channel, rows top-down.
class QRNIMAGE_EXPORT Image {
public:
    Image() = default;
    Image(unsigned int width, unsigned int height);

    // From a bottom-up BGR image with rows padded to four bytes (a DIB, a bitmap context's
    // memory image).
    static Image fromBottomUpBGR(const unsigned char* bits, unsigned int width,
                                 unsigned int height);
    // From glReadPixels(GL_RGBA, GL_UNSIGNED_BYTE) output: bottom-up RGBA rows.
    static Image fromBottomUpRGBA(const unsigned char* pixels, unsigned int width,
                                  unsigned int height);

    // False with a reason in error when the file cannot be read or written.
    static bool loadPng(const std::string& path, Image& image, std::string* error = nullptr);
    bool savePng(const std::string& path, std::string* error = nullptr) const;

    unsigned int width() const { return m_width; }
    unsigned int height() const { return m_height; }
    bool empty() const { return m_width == 0 || m_height == 0; }
    const std::vector<std::uint8_t>& pixels() const { return m_pixels; }
    std::uint8_t* pixel(unsigned int x, unsigned int y) {
        return &m_pixels[(static_cast<std::size_t>(y) * m_width + x) * 4];
    }
    const std::uint8_t* pixel(unsigned int x, unsigned int y) const {
        return &m_pixels[(static_cast<std::size_t>(y) * m_width + x) * 4];
    }

    // Compares two images of the same size: a pixel differs when any channel differs by more
    // than tolerance. The difference image shows differing pixels in red over a faded copy.
    struct Comparison;
    static Comparison compare(const Image& a, const Image& b, int tolerance);

private:
    unsigned int m_width = 0;
    unsigned int m_height = 0;
    std::vector<std::uint8_t> m_pixels;
};

struct Image::Comparison {
    bool sameSize = false;
    std::size_t differing = 0;
    int maxChannelDifference = 0;
    Image difference;
};

} // namespace qrnimage
