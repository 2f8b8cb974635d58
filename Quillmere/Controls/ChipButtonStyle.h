#pragma once

#include "Quillmere/Controls/TextButton.h"

namespace quillmere {

/// How a chip button looks.
struct ChipButtonStyle {
    bool monospaced = false;
    bool selected = false;
};

/// The program's plain button: a chip with an outline, tinted and outlined in
/// the accent colour while selected.
class ChipButton : public TextButton {
public:
    explicit ChipButton(const QString& title, ChipButtonStyle style = {}, QWidget* parent = nullptr);

    bool isSelected() const { return style_.selected; }
    void setSelected(bool selected);

protected:
    Colors colors() const override;

private:
    ChipButtonStyle style_;
};

}  // namespace quillmere
