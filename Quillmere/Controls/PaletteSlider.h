#pragma once

#include <QWidget>

namespace quillmere {

/// A continuous slider from 0 to 1, without steps for the mouse. The arrows
/// move it by a hundredth, the page keys by a tenth, Home and End to the ends.
/// The wheel leaves it alone: scrolling past must not change a setting.
class PaletteSlider : public QWidget {
    Q_OBJECT
public:
    explicit PaletteSlider(QWidget* parent = nullptr);

    double value() const { return value_; }
    /// Shows another value, limited to 0...1, without telling `moved`.
    void setValue(double value);
    /// Takes the user's value: shows it and tells `moved` when it is another.
    void slide(double value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /// The user moved the knob to this value.
    void moved(double value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    /// The x of the middle of the knob for this value, in points.
    double position(double value) const;
    void drag(double x);

    double value_ = 0;
    /// Where on the knob the mouse holds it, from its middle, in points.
    double grip_ = 0;
};

}  // namespace quillmere
