#pragma once

#include "Quillmere/Platform/PlatePanel.h"

#include <QRectF>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

/// A plate panel that shows nothing and remembers everything. Fades stand
/// still until the test finishes them.
class FakePlatePanel : public PlatePanel {
public:
    struct Fade {
        double alpha;
        double seconds;
        std::function<void()> completion;
        bool overtaken = false;
    };

    void setContent(QWidget* content, const PlateMaterial& material) override {
        calls.emplace_back("setContent");
        material_ = material;
        content_.reset(content);
    }

    void setFrame(const QRectF& frame) override {
        calls.emplace_back("setFrame");
        frame_ = frame;
    }

    QRectF visibleFrame() const override {
        ++visibleFrameCalls;
        return visibleFrameValue;
    }

    void setAlpha(double alpha) override {
        calls.emplace_back("setAlpha");
        overtakeFades();
        alpha_ = alpha;
    }

    double alpha() const override { return alpha_; }

    void fade(double alpha, double seconds, std::function<void()> completion) override {
        calls.emplace_back("fade");
        overtakeFades();
        fades_.push_back({alpha, seconds, std::move(completion)});
        // Anywhere between the ends: the old opacity is gone, the new not reached.
        alpha_ = (alpha_ + alpha) / 2;
    }

    void orderFront() override {
        calls.emplace_back("orderFront");
        isVisible_ = true;
    }

    void orderOut() override {
        calls.emplace_back("orderOut");
        isVisible_ = false;
    }

    bool isTranslucent() const override { return translucent; }

    /// Ends the oldest running fade, an overtaken one too.
    void finishFade() {
        const auto fade = std::move(fades_.front());
        fades_.pop_front();
        if (!fade.overtaken) alpha_ = fade.alpha;
        if (fade.completion) fade.completion();
    }

    QWidget* content() const { return content_.get(); }
    const PlateMaterial& material() const { return material_; }
    const QRectF& frame() const { return frame_; }
    bool isVisible() const { return isVisible_; }
    const std::deque<Fade>& fades() const { return fades_; }

    QRectF visibleFrameValue{0, 0, 1280, 800};
    mutable int visibleFrameCalls = 0;
    bool translucent = true;
    std::vector<std::string> calls;  ///< the names of the changing calls, in their order

private:
    void overtakeFades() {
        for (auto& fade : fades_)
            fade.overtaken = true;
    }

    std::unique_ptr<QWidget> content_;
    PlateMaterial material_;
    QRectF frame_;
    double alpha_ = 1;
    bool isVisible_ = false;
    std::deque<Fade> fades_;
};

}  // namespace quillmere
