#pragma once

#include <array>
#include <cstddef>

/// The pictures that the program hands to the system.
namespace graphics {

struct Size {
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Of a CGImage, in pixels.
Size sizeOf(const void* image);
/// Red, green, blue and alpha of a pixel, premultiplied, 0 to 255; y downwards.
std::array<int, 4> pixelOf(const void* image, std::size_t x, std::size_t y);

}  // namespace graphics
