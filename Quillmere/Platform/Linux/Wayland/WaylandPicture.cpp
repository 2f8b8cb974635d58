#include "Quillmere/Platform/Linux/Wayland/WaylandPicture.h"

#include <limits>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace quillmere {

namespace {

constexpr qsizetype bytesAPixel = 4;

/// Memory that cannot be made smaller under the compositor, which would
/// otherwise have to guard each read. -1 without it.
int makeMemory(qsizetype bytes) {
    const int descriptor = memfd_create("quillmere-plate", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (descriptor < 0) return -1;
    if (ftruncate(descriptor, bytes) == 0 && fcntl(descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_SEAL) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

}  // namespace

const wl_buffer_listener WaylandPicture::listener{
    .release =
        [](void* data, wl_buffer*) {
            auto& picture = *static_cast<WaylandPicture*>(data);
            picture.isBusy_ = false;
            if (picture.onReleased) picture.onReleased();
        },
};

WaylandPicture::WaylandPicture(wl_shm* shm, QSize size) {
    const qsizetype bytes = bytesAPixel * size.width() * size.height();
    if (bytes <= 0 || bytes > std::numeric_limits<int>::max()) return;
    const int descriptor = makeMemory(bytes);
    if (descriptor < 0) return;
    void* memory = mmap(nullptr, static_cast<std::size_t>(bytes), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory != MAP_FAILED) {
        memory_ = static_cast<uchar*>(memory);
        const int line = static_cast<int>(bytesAPixel) * size.width();
        image_ = QImage(memory_, size.width(), size.height(), line, QImage::Format_ARGB32_Premultiplied);
        wl_shm_pool* pool = wl_shm_create_pool(shm, descriptor, static_cast<int>(bytes));
        buffer_ = wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), line, WL_SHM_FORMAT_ARGB8888);
        wl_shm_pool_destroy(pool);
        wl_buffer_add_listener(buffer_, &listener, this);
    }
    close(descriptor);
}

WaylandPicture::~WaylandPicture() {
    if (buffer_ != nullptr) wl_buffer_destroy(buffer_);
    if (memory_ != nullptr) munmap(memory_, static_cast<std::size_t>(image_.sizeInBytes()));
}

void WaylandPicture::attach(wl_surface* surface) {
    wl_surface_attach(surface, buffer_, 0, 0);
    isBusy_ = true;
}

}  // namespace quillmere
