#pragma once

#include "Quillmere/Platform/PlatePanel.h"

#include <memory>

namespace quillmere {

/// The plate's panel as one of the system's own: Qt's window flags cannot say
/// all that it has to be. Qt draws the content, as a picture; the system's
/// views lie behind it.
class NativePlatePanel final : public PlatePanel {
public:
    NativePlatePanel();
    ~NativePlatePanel() override;

    void setContent(QWidget* content, const PlateMaterial& material) override;
    void setFrame(const QRectF& frame) override;
    QRectF visibleFrame() const override;
    void setAlpha(double alpha) override;
    double alpha() const override;
    void fade(double alpha, double seconds, std::function<void()> completion) override;
    void orderFront() override;
    void orderOut() override;
    bool isTranslucent() const override { return true; }

private:
    struct Native;

    std::unique_ptr<Native> native_;
    std::unique_ptr<QWidget> content_;
};

}  // namespace quillmere
