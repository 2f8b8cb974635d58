#pragma once

#include <QMargins>
#include <QPixmap>
#include <QWidget>

namespace quillmere {

/// The soft shadow around the plate, which no compositor draws as it should:
/// theirs are square, or show through a translucent plate. Leaves the plate's
/// own place untouched.
class PlateShadow : public QWidget {
public:
    /// The room that it takes on each side of the plate, in points.
    static constexpr int margin = 32;
    static constexpr QMargins margins() { return {margin, margin, margin, margin}; }

    explicit PlateShadow(QWidget* parent) : QWidget(parent) {}

    /// Draws it around a plate that fills this widget up to the margin, or not
    /// at all.
    void setDrawn(bool isDrawn);
    bool isDrawn() const { return isDrawn_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isDrawn_ = false;
    QPixmap tile_;  ///< the corners and a bit of each edge, in the screen's pixels
};

}  // namespace quillmere
