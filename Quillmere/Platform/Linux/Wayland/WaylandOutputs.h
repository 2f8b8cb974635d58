#pragma once

#include <QSize>

#include <cstdint>
#include <functional>
#include <list>

#include <wayland-client.h>

namespace quillmere {

/// The outputs of a Wayland compositor, as far as the plate must know them.
/// Main thread only.
class WaylandOutputs {
public:
    WaylandOutputs() = default;
    ~WaylandOutputs() { clear(); }
    WaylandOutputs(const WaylandOutputs&) = delete;
    WaylandOutputs& operator=(const WaylandOutputs&) = delete;

    /// Called when an output has changed, or is gone.
    std::function<void()> onChanged;

    /// Takes up the one with this name in the registry.
    /// One too old to tell its scale is not taken.
    void add(wl_registry* registry, std::uint32_t name, std::uint32_t version);
    /// Of any global; those that are no outputs change nothing.
    void remove(std::uint32_t name);
    /// Lets go of all, as is due before the connection ends.
    void clear();

    /// Pixels a point, rounded up by the compositor where it is a fraction.
    /// Without an output (null, or gone): the largest of all, since a picture
    /// looks better scaled down than up.
    int scale(const wl_output* output) const;

    /// In points: what fits on each of them. Empty without an output.
    QSize commonSize() const;

private:
    struct Output {
        std::uint32_t name = 0;
        WaylandOutputs* owner = nullptr;
        wl_output* proxy = nullptr;
        QSize pixels;
        bool isTurned = false;  ///< by a quarter, which swaps its sides
        int scale = 1;
    };

    static const wl_output_listener listener;

    std::list<Output> outputs_;  ///< libwayland keeps their addresses
};

}  // namespace quillmere
