#include "Quillmere/Platform/Linux/Wayland/BlurProtocol.h"

#include <array>
#include <cstdint>

namespace quillmere::blur {

namespace {

// The protocol's numbers: a request's is its place in the tables below.
constexpr std::uint32_t createRequest = 0;
constexpr std::uint32_t unsetRequest = 1;
constexpr std::uint32_t commitRequest = 0;
constexpr std::uint32_t setRegionRequest = 1;
constexpr std::uint32_t releaseRequest = 2;

std::array<const wl_interface*, 1> regionTypes{&wl_region_interface};

const std::array<wl_message, 3> blurRequests{{
    {"commit", "", nullptr},
    {"set_region", "?o", regionTypes.data()},
    {"release", "", nullptr},
}};

const wl_interface blurInterface{"org_kde_kwin_blur", 1, static_cast<int>(blurRequests.size()),
                                 blurRequests.data(), 0, nullptr};

std::array<const wl_interface*, 2> createTypes{&blurInterface, &wl_surface_interface};
std::array<const wl_interface*, 1> unsetTypes{&wl_surface_interface};

const std::array<wl_message, 2> managerRequests{{
    {"create", "no", createTypes.data()},
    {"unset", "o", unsetTypes.data()},
}};

}  // namespace

const wl_interface managerInterface{"org_kde_kwin_blur_manager", 1, static_cast<int>(managerRequests.size()),
                                    managerRequests.data(),      0, nullptr};

wl_proxy* request(wl_proxy* manager, wl_surface* surface, wl_region* part) {
    wl_proxy* blur = wl_proxy_marshal_constructor(manager, createRequest, &blurInterface, nullptr, surface);
    wl_proxy_marshal(blur, setRegionRequest, part);
    wl_proxy_marshal(blur, commitRequest);
    return blur;
}

void release(wl_proxy* manager, wl_surface* surface, wl_proxy* request) {
    wl_proxy_marshal(manager, unsetRequest, surface);
    wl_proxy_marshal(request, releaseRequest);
    wl_proxy_destroy(request);
}

}  // namespace quillmere::blur
