#include "Quillmere/Controls/WidgetPalette.h"

#include "Quillmere/Palette.h"

namespace quillmere {

QPalette widgetPalette() {
    const bool isDark = Palette::isDark();
    const QColor background = Palette::card().resolved(isDark);
    const QColor text = labelColor().resolved(isDark);
    QPalette palette(Palette::chip().resolved(isDark), background);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    for (const auto role : {QPalette::Window, QPalette::Base, QPalette::ToolTipBase})
        palette.setColor(role, background);
    palette.setColor(QPalette::Highlight, Palette::accent().resolved(isDark));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, Palette::muted().resolved(isDark));
    return palette;
}

}  // namespace quillmere
