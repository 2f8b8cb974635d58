#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Controls/CardStyle.h"

#include <functional>

namespace quillmere {

class ChipButton;
class PaletteLabel;
class PaletteSlider;
class PopUpPicker;
class SegmentedPicker;

/// Edits how the plate looks and when it is shown. Keeps no state of its own.
/// Main thread only.
class PlateSection : public Card {
public:
    /// `model` must outlive this. `glassAvailable`: the system has a glass
    /// material.
    PlateSection(ConfigModel& model, bool glassAvailable, QWidget* parent = nullptr);

private:
    void layOut();
    void observe();
    void refresh();
    void edit(const std::function<void(PlateSettings&)>& change);

    ConfigModel& model_;
    bool glassAvailable_;
    PopUpPicker* visibility_;
    SegmentedPicker* background_;
    QWidget* opacityRow_;  ///< hidden for a glass plate
    PaletteSlider* opacity_;
    PaletteLabel* percentage_;
    ChipButton* preview_;
};

}  // namespace quillmere
