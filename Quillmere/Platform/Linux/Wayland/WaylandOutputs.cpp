#include "Quillmere/Platform/Linux/Wayland/WaylandOutputs.h"

#include <algorithm>

namespace quillmere {

namespace {

// The first that tells the scale, and when it has told all.
constexpr std::uint32_t neededVersion = 2;

bool isQuarterTurn(int transform) {
    return transform % 2 == 1;
}

}  // namespace

const wl_output_listener WaylandOutputs::listener{
    .geometry = [](void* data, wl_output*, int, int, int, int, int, const char*, const char*,
                   int transform) { static_cast<Output*>(data)->isTurned = isQuarterTurn(transform); },
    .mode =
        [](void* data, wl_output*, std::uint32_t flags, int width, int height, int) {
            if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) static_cast<Output*>(data)->pixels = {width, height};
        },
    .done =
        [](void* data, wl_output*) {
            const WaylandOutputs& owner = *static_cast<Output*>(data)->owner;
            if (owner.onChanged) owner.onChanged();
        },
    .scale = [](void* data, wl_output*, int factor) { static_cast<Output*>(data)->scale = std::max(factor, 1); },
};

void WaylandOutputs::clear() {
    for (const Output& output : outputs_)
        wl_output_destroy(output.proxy);
    outputs_.clear();
}

void WaylandOutputs::add(wl_registry* registry, std::uint32_t name, std::uint32_t version) {
    if (version < neededVersion) return;
    auto* proxy = static_cast<wl_output*>(wl_registry_bind(registry, name, &wl_output_interface, neededVersion));
    if (proxy == nullptr) return;
    Output& output = outputs_.emplace_back(Output{.name = name, .owner = this, .proxy = proxy});
    wl_output_add_listener(proxy, &listener, &output);
}

void WaylandOutputs::remove(std::uint32_t name) {
    const auto gone = std::ranges::find(outputs_, name, &Output::name);
    if (gone == outputs_.end()) return;
    wl_output_destroy(gone->proxy);
    outputs_.erase(gone);
    if (onChanged) onChanged();
}

int WaylandOutputs::scale(const wl_output* output) const {
    int largest = 1;
    for (const Output& known : outputs_) {
        if (known.proxy == output) return known.scale;
        largest = std::max(largest, known.scale);
    }
    return largest;
}

QSize WaylandOutputs::commonSize() const {
    QSize common;
    for (const Output& output : outputs_) {
        const QSize size = (output.isTurned ? output.pixels.transposed() : output.pixels) / output.scale;
        common = common.isEmpty() ? size : common.boundedTo(size);
    }
    return common;
}

}  // namespace quillmere
