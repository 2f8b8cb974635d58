#pragma once

#include <QFont>
#include <QLabel>
#include <QString>

#include <string_view>

namespace quillmere {

/// A single line of plain text in the colour of primary text, resolved each
/// time it is drawn. Sized to fit its text; made narrower, it elides it.
class PlateLabel : public QLabel {
public:
    /// `name` is UTF-8 from outside the program. A character that would break
    /// the line is shown as a blank.
    PlateLabel(std::string_view name, const QFont& font, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillmere
