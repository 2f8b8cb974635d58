#pragma once

#include "Quillmere/Controls/TextButton.h"

namespace quillmere {

/// How a chip button looks: outlined, and tinted and outlined in the accent
/// colour while selected.
struct ChipButtonStyle {
    bool monospaced = false;
    bool selected = false;

    TextButton::Metrics metrics() const;
    TextButton::Colors colors() const;
};

/// The program's plain button.
class ChipButton : public TextButton {
public:
    explicit ChipButton(const QString& title, ChipButtonStyle style = {}, QWidget* parent = nullptr);

    void setSelected(bool selected);

protected:
    Colors colors() const override;

private:
    ChipButtonStyle style_;
};

}  // namespace quillmere
