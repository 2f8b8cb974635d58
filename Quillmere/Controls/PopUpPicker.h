#pragma once

#include <QComboBox>

namespace quillmere {

/// A choice of one from a list that pops up. `activated` tells the user's
/// choice. The wheel leaves it alone: scrolling past must not change a setting.
class PopUpPicker : public QComboBox {
public:
    explicit PopUpPicker(const QStringList& titles, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};

}  // namespace quillmere
