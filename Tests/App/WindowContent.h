#pragma once

#include <QAbstractButton>
#include <QImage>
#include <QLabel>
#include <QWidget>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

/// What the user finds in a window. The windows hand none of their parts out:
/// the tests look for them by what is written on them, or by the names that
/// assistive programs read out.
namespace quillmere {

/// The visible widgets of a type in `root`, from top to bottom and from left to
/// right.
template <class Widget>
std::vector<Widget*> shown(const QWidget& root) {
    std::multimap<std::pair<int, int>, Widget*> places;
    for (QWidget* const widget : root.findChildren<QWidget*>()) {
        auto* const match = dynamic_cast<Widget*>(widget);
        if (!match || !match->isVisible()) continue;
        const QPoint place = match->mapTo(&root, QPoint());
        places.emplace(std::pair(place.y(), place.x()), match);
    }
    std::vector<Widget*> found;
    for (const auto& [place, widget] : places)
        found.push_back(widget);
    return found;
}

/// The visible control that assistive programs know by this name.
template <class Widget = QWidget>
Widget& named(const QWidget& root, const QString& name) {
    for (Widget* const widget : shown<Widget>(root))
        if (widget->accessibleName() == name) return *widget;
    throw std::runtime_error("nothing is called " + name.toStdString());
}

/// The visible button with this name.
inline QAbstractButton& button(const QWidget& root, const QString& name) {
    return named<QAbstractButton>(root, name);
}

/// The visible texts that are no controls, in reading order.
inline QStringList texts(const QWidget& root) {
    QStringList texts;
    for (const QLabel* const label : shown<QLabel>(root))
        texts += label->text();
    return texts;
}

/// The visible label with this text.
inline QLabel& label(const QWidget& root, const QString& text) {
    for (QLabel* const label : shown<QLabel>(root))
        if (label->text() == text) return *label;
    throw std::runtime_error("nothing says " + text.toStdString());
}

/// The widget on its own, on transparent ground, drawn so large that the
/// strokes of its letters are wider than a pixel.
inline QImage enlarged(QWidget& widget) {
    constexpr int scale = 8;
    QImage image(widget.size() * scale, QImage::Format_ARGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

/// The colour that a label writes in.
inline QColor ink(QLabel& label) {
    const QImage image = enlarged(label);
    QColor strongest(0, 0, 0, 0);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y).alpha() > strongest.alpha()) strongest = image.pixelColor(x, y);
    return strongest;
}

/// Whether two colours are the same but for what rounding does to translucent
/// ones.
inline bool isSame(const QColor& one, const QColor& other) {
    const auto isNear = [](int a, int b) { return std::abs(a - b) <= 3; };
    return isNear(one.red(), other.red()) && isNear(one.green(), other.green()) && isNear(one.blue(), other.blue())
           && isNear(one.alpha(), other.alpha());
}

}  // namespace quillmere
