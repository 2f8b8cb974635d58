#pragma once

#include <QFont>

namespace quillmere {

/// The sizes of text that the windows use, in points.
enum class TextStyle {
    body,        ///< 13, regular
    headline,    ///< 13, semibold: the title of a card
    title,       ///< 15, semibold: the message of a window
    caption,     ///< 11, regular: notes
    monospaced,  ///< 13, regular, every glyph equally wide
    button,      ///< 13, medium: the label of the main button
};

/// The system's font in one of these sizes. Sized in device-independent
/// pixels: the user's resolution setting must not scale one part of a layout
/// whose other lengths stay.
QFont textFont(TextStyle style);

}  // namespace quillmere
