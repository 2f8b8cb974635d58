#pragma once

#include <QAbstractButton>

class QPainter;

namespace quillmere {

/// What all buttons of the program share: plain text, reached with Tab,
/// pressed with Space or Return, a ring while the keyboard has moved the focus
/// to it, translucent as a whole while pressed and dimmed while disabled. A
/// click leaves the focus where it is.
class ControlButton : public QAbstractButton {
public:
    /// `radius` is that of the shape that subclasses draw, in points.
    ControlButton(const QString& title, double radius, QWidget* parent);

    /// The text, shown and told to assistive programs as it is: an ampersand
    /// makes no shortcut.
    void setTitle(const QString& title);
    QString title() const { return title_; }

protected:
    /// Draws the button as it is at rest.
    virtual void paintFace(QPainter& painter) = 0;
    /// The opacity of the whole button at this moment, 0 to 1.
    virtual double opacity() const;

    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QString title_;
    double radius_;
};

}  // namespace quillmere
