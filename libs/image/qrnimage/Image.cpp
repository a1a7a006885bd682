#include "qrnimage/Image.h"

#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace qrnimage {

namespace {
struct FileCloser {
    void operator()(std::FILE* f) const {
        if (f)
            std::fclose(f);
    }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;
} // namespace

Image::Image(unsigned int width, unsigned int height)
    : m_width(width), m_height(height), m_pixels(static_cast<std::size_t>(width) * height * 4, 0) {}

Image Image::fromBottomUpBGR(const unsigned char* bits, unsigned int width, unsigned int height) {
    Image img(width, height);
    const std::size_t stride = (static_cast<std::size_t>(width) * 3 + 3) & ~std::size_t(3);
    for (unsigned int y = 0; y < height; ++y) {
        const unsigned char* row = bits + (height - 1 - y) * stride;
        for (unsigned int x = 0; x < width; ++x) {
            std::uint8_t* p = img.pixel(x, y);
            p[0] = row[x * 3 + 2];
            p[1] = row[x * 3 + 1];
            p[2] = row[x * 3 + 0];
            p[3] = 255;
        }
    }
    return img;
}

Image Image::fromBottomUpRGBA(const unsigned char* pixels, unsigned int width,
                              unsigned int height) {
    Image img(width, height);
    const std::size_t stride = static_cast<std::size_t>(width) * 4;
    for (unsigned int y = 0; y < height; ++y)
        std::copy(pixels + (height - 1 - y) * stride, pixels + (height - y) * stride,
                  img.pixel(0, y));
    return img;
}

bool Image::loadPng(const std::string& path, Image& image, std::string* error) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, path.c_str())) {
        if (error)
            *error = path + ": " + png.message;
        return false;
    }
    png.format = PNG_FORMAT_RGBA;
    Image img(png.width, png.height);
    if (!png_image_finish_read(&png, nullptr, img.m_pixels.data(), 0, nullptr)) {
        if (error)
            *error = path + ": " + png.message;
        png_image_free(&png);
        return false;
    }
    image = std::move(img);
    return true;
}

bool Image::savePng(const std::string& path, std::string* error) const {
    if (empty()) {
        if (error)
            *error = path + ": empty image";
        return false;
    }
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = m_width;
    png.height = m_height;
    png.format = PNG_FORMAT_RGBA;
    // A new file renamed over the old one: a failed write never leaves half a picture.
    const std::string temporary = path + ".new";
    {
        FilePtr f(std::fopen(temporary.c_str(), "wb"));
        if (!f) {
            if (error)
                *error = path + ": cannot open for writing";
            return false;
        }
        const bool written =
            png_image_write_to_stdio(&png, f.get(), 0, m_pixels.data(), 0, nullptr) &&
            std::fflush(f.get()) == 0;
        if (!written) {
            if (error)
                *error = path + ": " + (png.message[0] ? png.message : "write failed");
            f.reset();
            std::remove(temporary.c_str());
            return false;
        }
    }
    std::error_code code;
    std::filesystem::rename(temporary, path, code);
    if (code) {
        if (error)
            *error = path + ": " + code.message();
        std::remove(temporary.c_str());
        return false;
    }
    return true;
}

Image::Comparison Image::compare(const Image& a, const Image& b, int tolerance) {
    Comparison c;
    c.sameSize = a.width() == b.width() && a.height() == b.height();
    if (!c.sameSize)
        return c;
    c.difference = Image(a.width(), a.height());
    for (unsigned int y = 0; y < a.height(); ++y)
        for (unsigned int x = 0; x < a.width(); ++x) {
            const std::uint8_t* p = a.pixel(x, y);
            const std::uint8_t* q = b.pixel(x, y);
            int d = 0;
            for (int i = 0; i < 4; ++i)
                d = std::max(d, std::abs(int(p[i]) - int(q[i])));
            c.maxChannelDifference = std::max(c.maxChannelDifference, d);
            std::uint8_t* o = c.difference.pixel(x, y);
            if (d > tolerance) {
                ++c.differing;
                o[0] = 255;
                o[1] = o[2] = 0;
            } else {
                // A faded copy of the expected image, for orientation.
                for (int i = 0; i < 3; ++i)
                    o[i] = static_cast<std::uint8_t>(191 + p[i] / 4);
            }
            o[3] = 255;
        }
    return c;
}

} // namespace qrnimage
