#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <optional>

namespace quillmere {

/// The opacity of a panel over time. Main thread only.
class PlateFade {
public:
    /// `apply` brings an opacity (0 to 1) onto the screen.
    explicit PlateFade(std::function<void(double alpha)> apply);

    /// The opacity that was applied last; 1 at first.
    double alpha() const { return alpha_; }

    /// At once; it overtakes a fade.
    void set(double alpha);

    /// Goes to `alpha` in `seconds`, step by step or, not `isStepped`, at the
    /// end; then calls `completion`, also if the fade was overtaken.
    void run(double alpha, double seconds, bool isStepped, std::function<void()> completion);

private:
    struct Way {
        double from;
        double to;
        double seconds;
        QElapsedTimer clock;
    };

    void step();
    void end(int number, const std::function<void()>& completion);
    void apply(double alpha);

    std::function<void(double alpha)> apply_;
    double alpha_ = 1;
    std::optional<Way> way_;
    int number_ = 0;  ///< counts fades and what overtakes them
    QTimer steps_;
};

}  // namespace quillmere
