#pragma once

#include "Quillmere/Platform/Linux/Plate/PlateFade.h"
#include "Quillmere/Platform/Linux/Plate/PlateShadow.h"
#include "Quillmere/Platform/Linux/Plate/X11MainScreen.h"
#include "Quillmere/Platform/Linux/X11/QtX11.h"
#include "Quillmere/Platform/PlatePanel.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace quillmere {

/// The plate's panel as a window that the window manager does not manage, since
/// a managed one never shows above a full-screen window. Made once, kept and
/// shown again. Main thread only.
class X11PlatePanel : public PlatePanel {
public:
    /// Makes the hidden window. Needs the application object.
    X11PlatePanel();
    ~X11PlatePanel() override;

    void setContent(QWidget* content, const PlateMaterial& material) override;
    void setFrame(const QRectF& frame) override;
    QRectF visibleFrame() const override;
    void setAlpha(double alpha) override { fade_.set(alpha); }
    double alpha() const override { return fade_.alpha(); }
    /// Without a compositor, and on other displays than X11, nothing is seen
    /// of it until its end.
    void fade(double alpha, double seconds, std::function<void()> completion) override;
    void orderFront() override;
    void orderOut() override;
    bool isTranslucent() const override;

private:
    void tellShadow(const QMargins& room) const;
    bool canFade() const;
    void applyAlpha(double alpha);
    void paintAt(double alpha);

    std::optional<QtX11> x11_;
    std::optional<X11MainScreen> mainScreen_;  ///< absent where the display is not X11
    xcb_atom_t compositorSelection_ = XCB_ATOM_NONE;
    xcb_atom_t frameExtents_ = XCB_ATOM_NONE;
    /// Whether the compositor makes a window as opaque as it asks to be.
    bool isOpacityHeeded_ = true;
    std::unique_ptr<QWidget> window_;
    PlateShadow* shadow_;         ///< owned by the window, and fills it
    QWidget* content_ = nullptr;  ///< owned by the shadow
    PlateFade fade_;
};

}  // namespace quillmere
