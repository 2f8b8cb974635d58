#include "Quillmere/Platform/Mac/PlateBacking.h"

#include "Quillmere/Platform/Mac/NativeColor.h"
#include "Quillmere/Platform/Mac/Retained.h"

#include <CoreGraphics/CoreGraphics.h>
#include <QuartzCore/QuartzCore.h>

#include <QImage>
#include <QWidget>

#include <cmath>

namespace quillmere {

namespace {

QImage pictureOf(QWidget& widget, double scale) {
    const auto pixels = [scale](int points) { return static_cast<int>(std::ceil(points * scale)); };
    QImage image(pixels(widget.width()), pixels(widget.height()), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

Retained<CGImageRef> nativeImage(const QImage& image) {
    const Retained bytes(CFDataCreate(kCFAllocatorDefault, image.constBits(), image.sizeInBytes()));
    const Retained provider(CGDataProviderCreateWithCFData(bytes.get()));
    const Retained space(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
    constexpr auto layout = static_cast<CGBitmapInfo>(kCGImageAlphaPremultipliedFirst)
                            | static_cast<CGBitmapInfo>(kCGBitmapByteOrder32Little);
    const auto size = [](auto number) { return static_cast<std::size_t>(number); };
    return Retained(CGImageCreate(size(image.width()), size(image.height()), 8, 32, size(image.bytesPerLine()),
                                  space.get(), layout, provider.get(), nullptr, false, kCGRenderingIntentDefault));
}

Owned<NSView> pictureView(QWidget& widget, double scale) {
    Owned view([[NSView alloc] initWithFrame:NSMakeRect(0, 0, widget.width(), widget.height())]);
    const auto image = nativeImage(pictureOf(widget, scale));
    view.get().wantsLayer = YES;
    view.get().layer.contents = reinterpret_cast<id>(image.get());
    view.get().layer.contentsScale = scale;
    return view;
}

Owned<NSView> onBlur(const Owned<NSView>& content, double cornerRadius) {
    const NSRect bounds = content.get().frame;
    Owned container([[NSView alloc] initWithFrame:bounds]);
    const Owned effect([[NSVisualEffectView alloc] initWithFrame:bounds]);
    effect.get().material = NSVisualEffectMaterialHUDWindow;
    effect.get().blendingMode = NSVisualEffectBlendingModeBehindWindow;
    effect.get().state = NSVisualEffectStateActive;
    effect.get().wantsLayer = YES;
    effect.get().layer.cornerRadius = cornerRadius;
    effect.get().layer.masksToBounds = YES;
    [container.get() addSubview:effect.get()];
    [container.get() addSubview:content.get()];
    return container;
}

Owned<NSView> onGlass(const Owned<NSView>& content, const PlateMaterial& material) {
    Owned glass([[NSGlassEffectView alloc] initWithFrame:content.get().frame]);
    glass.get().cornerRadius = material.cornerRadius;
    glass.get().style = NSGlassEffectViewStyleRegular;
    glass.get().tintColor = NativeColor::make(material.tint);
    glass.get().contentView = content.get();
    return glass;
}

}  // namespace

Owned<NSView> makePlateBacking(QWidget& content, const PlateMaterial& material, double scale) {
    auto picture = pictureView(content, scale);
    switch (material.kind) {
        case PlateMaterial::Kind::none:
            return picture;
        case PlateMaterial::Kind::blur:
            return onBlur(picture, material.cornerRadius);
        case PlateMaterial::Kind::glass:
            return onGlass(picture, material);
    }
    return picture;
}

}  // namespace quillmere
