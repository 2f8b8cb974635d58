#include "Tests/Mac/Doubles/Graphics.h"

#include "Tests/Mac/Doubles/CoreFoundation.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <CoreGraphics/CoreGraphics.h>

namespace graphics {

namespace {

constexpr std::size_t bytesPerPixel = 4;

struct Image : cf::Object {
    Image(Size imageSize, std::size_t imageRow) : Object(cf::Kind::image), size(imageSize), row(imageRow) {}

    Size size;
    std::size_t row;  ///< bytes
};

const Image& imageOf(const void* ref) {
    return static_cast<const Image&>(*cf::object(ref, cf::Kind::image));
}

}  // namespace

Size sizeOf(const void* image) {
    return imageOf(image).size;
}

std::array<int, 4> pixelOf(const void* ref, std::size_t x, std::size_t y) {
    const Image& image = imageOf(ref);
    misuse::stopIf(x >= image.size.width || y >= image.size.height, "a pixel beyond the picture");
    const auto byte = [&](std::size_t index) {
        return static_cast<int>(static_cast<unsigned char>(image.bytes[y * image.row + x * bytesPerPixel + index]));
    };
    // Alpha first in a little-endian word: blue, green, red, alpha in memory.
    return {byte(2), byte(1), byte(0), byte(3)};
}

}  // namespace graphics

using namespace graphics;

extern "C" {

const CFStringRef kCGColorSpaceSRGB = CFSTR("kCGColorSpaceSRGB");

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name) {
    misuse::stopIf(name != kCGColorSpaceSRGB, "another colour space than that of the palette");
    return cf::as<CGColorSpaceRef>(cf::string("sRGB"));
}

CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data) {
    return cf::as<CGDataProviderRef>(cf::array({cf::object(CFRetain(data))}));
}

CGImageRef CGImageCreate(std::size_t width, std::size_t height, std::size_t bitsPerComponent, std::size_t bitsPerPixel,
                         std::size_t bytesPerRow, CGColorSpaceRef space, CGBitmapInfo layout,
                         CGDataProviderRef provider, const CGFloat*, bool, CGColorRenderingIntent) {
    misuse::stopIf(!space || !provider, "a picture of nothing");
    misuse::stopIf(bitsPerComponent != 8 || bitsPerPixel != 32, "pixels that Qt does not draw");
    misuse::stopIf(layout != (kCGImageAlphaPremultipliedFirst | 2U << 12U), "pixels in another order");
    const std::string& bytes = cf::object(cf::object(provider, cf::Kind::array)->items.front(), cf::Kind::data)->bytes;
    misuse::stopIf(bytesPerRow < width * bytesPerPixel || bytes.size() < bytesPerRow * height, "too few pixels");
    auto* const image = new Image({width, height}, bytesPerRow);
    image->bytes = bytes;
    return cf::as<CGImageRef>(image);
}

}  // extern "C"
