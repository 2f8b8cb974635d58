#pragma once

#include <QColor>
#include <QWidget>

namespace quillmere {

/// A colour with one value for light appearance and one for dark.
struct DynamicColor {
    QColor light;
    QColor dark;

    QColor resolved(bool isDark) const { return isDark ? dark : light; }
    /// The same colour at another opacity, 0 to 1.
    DynamicColor withAlpha(double alpha) const;

    friend bool operator==(const DynamicColor&, const DynamicColor&) = default;
};

/// The program's colours; every window and the plate take theirs from here.
namespace Palette {

DynamicColor dynamic(QColor light, QColor dark);

const DynamicColor& window();     ///< background of windows
const DynamicColor& card();       ///< the plate's background and the settings' cards
const DynamicColor& border();     ///< outlines
const DynamicColor& chip();       ///< chip buttons
const DynamicColor& accent();     ///< the accent button, switches, a selected chip's outline
const DynamicColor& selection();  ///< the plate's selected row, a selected chip
const DynamicColor& muted();      ///< secondary text
const DynamicColor& clear();      ///< nothing at all: as a stroke, no outline

/// Whether the program draws dark at this moment. The widgets are repainted
/// when it changes.
bool isDark();
/// Follows the system's choice; repaints every window when it changes. The
/// application calls it once at launch and on each change. Main thread.
void setDark(bool isDark);

}  // namespace Palette

/// The system's colour of primary text.
const DynamicColor& labelColor();

/// A rounded, filled, optionally outlined rectangle in palette colours,
/// resolved each time it is drawn.
class PlateView : public QWidget {
public:
    /// `radius` in points. A clear stroke draws no outline; any other one is
    /// 1 point wide, inside the edge.
    PlateView(DynamicColor fill, DynamicColor stroke, double radius, QWidget* parent = nullptr);

    const DynamicColor& fill() const { return fill_; }
    const DynamicColor& stroke() const { return stroke_; }
    double radius() const { return radius_; }
    /// 0 for a clear stroke, else 1 (points).
    double borderWidth() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DynamicColor fill_;
    DynamicColor stroke_;
    double radius_;
};

}  // namespace quillmere
