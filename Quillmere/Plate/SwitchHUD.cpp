#include "Quillmere/Plate/SwitchHUD.h"

#include "Quillmere/Palette.h"
#include "Quillmere/Plate/PlateLabel.h"
#include "Quillmere/Platform/RoundedRegion.h"

#include <QAccessible>
#include <QApplication>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

// Points and seconds.
constexpr int rowHeight = 52;
constexpr int rowGap = 6;
constexpr int outerInset = 12;
constexpr int minRowWidth = 220;
constexpr int textAllowance = 64;
constexpr double rowRadius = 12;
constexpr int labelFontSize = 21;
constexpr double visibleTime = 1.0;
constexpr double fadeTime = 0.25;

QFont labelFont() {
    QFont font = QApplication::font();
    font.setPixelSize(labelFontSize);
    font.setWeight(QFont::Normal);
    return font;
}

std::vector<std::unique_ptr<PlateLabel>> makeLabels(const std::vector<std::string>& names) {
    const auto font = labelFont();
    std::vector<std::unique_ptr<PlateLabel>> labels;
    labels.reserve(names.size());
    for (const auto& name : names)
        labels.push_back(std::make_unique<PlateLabel>(name, font));
    return labels;
}

int rowWidthFor(const std::vector<std::unique_ptr<PlateLabel>>& labels, double screenWidth) {
    int width = minRowWidth;
    for (const auto& label : labels)
        width = std::max(width, label->width() + textAllowance);
    const int room = static_cast<int>(screenWidth) - 2 * outerInset;
    return std::max(minRowWidth, std::min(width, room));
}

int panelHeight(std::size_t count) {
    const int rows = static_cast<int>(count);
    return rows * rowHeight + std::max(rows - 1, 0) * rowGap + 2 * outerInset;
}

void centre(QWidget& label, const QWidget& row) {
    label.move((row.width() - label.width()) / 2, (row.height() - label.height()) / 2);
}

}  // namespace

SwitchHUD::SwitchHUD(PlatePanel& panel, MainQueue& queue, bool glassAvailable)
    : panel_(panel), queue_(queue), glassAvailable_(glassAvailable) {}

void SwitchHUD::show(const std::vector<std::string>& names, int selected, const PlateSettings& settings) {
    // Asked once: the keyboard may go to a window on another monitor meanwhile.
    const QRectF visibleFrame = panel_.visibleFrame();
    const auto behind = material(settings);
    auto content = plate(rows(names, selected, visibleFrame.width()), settings, behind);
    const auto size = content->size();
    auto& shown = *content;
    panel_.setContent(content.release(), behind);
    place(size, visibleFrame);
    hideWork_.reset();
    panel_.setAlpha(1);
    panel_.orderFront();
    announce(shown);
    scheduleHide();
}

std::unique_ptr<QWidget> SwitchHUD::rows(const std::vector<std::string>& names, int selected,
                                         double screenWidth) const {
    auto labels = makeLabels(names);
    const int rowWidth = rowWidthFor(labels, screenWidth);
    auto content = std::make_unique<QWidget>();
    content->resize(rowWidth + 2 * outerInset, panelHeight(labels.size()));
    int y = outerInset;
    for (int i = 0; auto& owned : labels) {
        const auto& fill = i == selected ? Palette::selection() : Palette::clear();
        // Freed with its parent, as every child.
        auto* row = new PlateView(fill, Palette::clear(), rowRadius, content.get());
        row->setGeometry(outerInset, y, rowWidth, rowHeight);
        auto* label = owned.release();
        label->setParent(row);
        label->resize(std::min(label->width(), rowWidth - textAllowance), label->height());
        centre(*label, *row);
        if (i == selected) content->setAccessibleName(label->text());
        y += rowHeight + rowGap;
        ++i;
    }
    return content;
}

PlateMaterial SwitchHUD::material(const PlateSettings& settings) const {
    const bool wantsGlass = settings.resolvedBackground(glassAvailable_) == PlateBackground::glass;
    if (!wantsGlass || !panel_.isTranslucent()) return {};
    if (!glassAvailable_) return {.kind = PlateMaterial::Kind::blur, .cornerRadius = PlatePanel::cornerRadius};
    const double opacity = settings.resolvedOpacity(glassAvailable_);
    return {.kind = PlateMaterial::Kind::glass,
            .cornerRadius = PlatePanel::cornerRadius,
            .tint = Palette::card().withAlpha(opacity).resolved(Palette::isDark())};
}

std::unique_ptr<QWidget> SwitchHUD::plate(std::unique_ptr<QWidget> content, const PlateSettings& settings,
                                          const PlateMaterial& material) const {
    // Glass is tinted as the card would be, and edged by itself.
    if (material.kind == PlateMaterial::Kind::glass) return content;
    const auto bounds = content->rect();
    auto container = std::make_unique<QWidget>();
    container->resize(bounds.size());
    container->setAccessibleName(content->accessibleName());

    const bool translucent = panel_.isTranslucent();
    if (!translucent) {
        // The smooth edge of the plate would blend with whatever the window
        // held before; under a hard mask it blends with the outline's colour.
        auto* ground = new PlateView(Palette::border(), Palette::clear(), 0, container.get());
        ground->setGeometry(bounds);
        container->setMask(roundedRegion(bounds, PlatePanel::cornerRadius));
    }
    const double opacity = translucent ? settings.resolvedOpacity(glassAvailable_) : 1;
    auto* background =
        new PlateView(Palette::card().withAlpha(opacity), Palette::border(), PlatePanel::cornerRadius, container.get());
    background->setGeometry(bounds);
    content.release()->setParent(container.get());
    return container;
}

void SwitchHUD::place(const QSize& size, const QRectF& visibleFrame) {
    QRectF frame(0, 0, size.width(), size.height());
    frame.moveCenter(visibleFrame.center());
    panel_.setFrame(frame);
}

// The plate never takes the focus, so nothing else would tell a screen reader.
void SwitchHUD::announce(QWidget& plate) const {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(&plate, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void SwitchHUD::scheduleHide() {
    hideWork_ = queue_.after(visibleTime, [this] {
        panel_.fade(0, fadeTime, [this] {
            // Another show may have overtaken this fade.
            if (panel_.alpha() == 0) panel_.orderOut();
        });
    });
}

}  // namespace quillmere
