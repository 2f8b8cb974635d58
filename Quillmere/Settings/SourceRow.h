#pragma once

#include <QWidget>

namespace quillmere {

class IconButton;
class PaletteLabel;

/// One source of a group: its position, its name and the buttons that move or
/// remove it.
class SourceRow : public QWidget {
    Q_OBJECT
public:
    /// `index` from 0; fixed, since a row shows whatever source is there.
    explicit SourceRow(int index, QWidget* parent = nullptr);

    /// Shows this source, as one of `count`.
    void setSource(const QString& name, int count);

    IconButton& up() const { return *up_; }
    IconButton& down() const { return *down_; }
    IconButton& remove() const { return *remove_; }

signals:
    void moveUpRequested();
    void moveDownRequested();
    void removeRequested();

private:
    int index_;
    PaletteLabel* position_;
    PaletteLabel* name_;
    IconButton* up_;
    IconButton* down_;
    IconButton* remove_;
};

}  // namespace quillmere
