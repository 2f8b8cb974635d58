#pragma once

#include <QStringList>
#include <QWidget>

#include <vector>

class QAbstractButton;

namespace quillmere {

/// A choice of one among a few, all visible side by side. One stop for Tab;
/// the arrows choose.
class SegmentedPicker : public QWidget {
    Q_OBJECT
public:
    explicit SegmentedPicker(const QStringList& titles, QWidget* parent = nullptr);

    /// Shows another choice, without telling `chosen`.
    void setCurrentIndex(int index);

signals:
    /// The user chose, perhaps what was chosen already.
    void chosen(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<QAbstractButton*> segments_;
};

}  // namespace quillmere
