#pragma once

#include <QImage>

#include <functional>

#include <wayland-client.h>

namespace quillmere {

/// A picture in memory that the compositor sees too. Main thread only.
class WaylandPicture {
public:
    /// In pixels. Without memory for it, `isUsable` is false.
    WaylandPicture(wl_shm* shm, QSize size);
    ~WaylandPicture();
    WaylandPicture(const WaylandPicture&) = delete;
    WaylandPicture& operator=(const WaylandPicture&) = delete;

    /// Called when it is no longer busy; may not destroy this.
    std::function<void()> onReleased;

    bool isUsable() const { return buffer_ != nullptr; }
    /// The compositor still reads it: it may not be drawn into.
    bool isBusy() const { return isBusy_; }
    QSize size() const { return image_.size(); }

    /// To be drawn into; valid as long as this.
    QImage& image() { return image_; }

    /// Puts it on the surface, from the next commit on; busy from now on.
    void attach(wl_surface* surface);

private:
    static const wl_buffer_listener listener;

    wl_buffer* buffer_ = nullptr;
    uchar* memory_ = nullptr;
    QImage image_;
    bool isBusy_ = false;
};

}  // namespace quillmere
