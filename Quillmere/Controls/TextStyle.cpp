#include "Quillmere/Controls/TextStyle.h"

#include <QApplication>
#include <QFontDatabase>

namespace quillmere {

QFont textFont(TextStyle style) {
    QFont font =
        style == TextStyle::monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : QApplication::font();
    font.setPixelSize(style == TextStyle::title ? 15 : style == TextStyle::caption ? 11 : 13);
    switch (style) {
        case TextStyle::headline:
        case TextStyle::title:
            font.setWeight(QFont::DemiBold);
            break;
        case TextStyle::button:
            font.setWeight(QFont::Medium);
            break;
        case TextStyle::body:
        case TextStyle::caption:
        case TextStyle::monospaced:
            font.setWeight(QFont::Normal);
            break;
    }
    return font;
}

}  // namespace quillmere
