#include "Tests/Support/Screen.h"

#include "Tests/Support/SupportError.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cmath>
#include <cstdlib>
#include <memory>

namespace quillmere::support {

namespace {

struct ImageDeleter {
    void operator()(XImage* image) const { XDestroyImage(image); }
};

}  // namespace

Screen::Screen(const std::string& display) : connection_(display) {}

QImage Screen::part(const QRect& frame) const {
    const std::unique_ptr<XImage, ImageDeleter> image(XGetImage(
        connection_.display(), connection_.root(), frame.x(), frame.y(), static_cast<unsigned int>(frame.width()),
        static_cast<unsigned int>(frame.height()), AllPlanes, ZPixmap));
    if (image == nullptr || image->bits_per_pixel != 32) throw SupportError("no picture of the screen");
    const QImage view(reinterpret_cast<const uchar*>(image->data), image->width, image->height, image->bytes_per_line,
                      QImage::Format_RGB32);
    return view.copy();
}

QImage Screen::shot() const {
    return part(QRect(QPoint(0, 0), connection_.screenSize()));
}

QColor Screen::color(QPoint at) const {
    return part(QRect(at, QSize(1, 1))).pixelColor(0, 0);
}

bool Screen::isNear(QColor a, QColor b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance
           && std::abs(a.blue() - b.blue()) <= tolerance;
}

QColor Screen::blend(QColor bottom, QColor top) {
    const double alpha = top.alphaF();
    const auto mix = [alpha](int below, int above) {
        return static_cast<int>(std::lround((1 - alpha) * below + alpha * above));
    };
    return {mix(bottom.red(), top.red()), mix(bottom.green(), top.green()), mix(bottom.blue(), top.blue())};
}

void savePicture(const QImage& picture, const std::filesystem::path& file) {
    std::filesystem::create_directories(file.parent_path());
    if (!picture.save(QString::fromStdString(file.string()), "PNG"))
        throw SupportError("cannot write " + file.string());
}

}  // namespace quillmere::support
