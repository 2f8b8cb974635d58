#include "Tests/Machine/VirtualKeyboard.h"

#include "Tests/Support/SupportError.h"

#include <cerrno>

#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillmere::machine {

using support::SupportError;

namespace {

void enable(int descriptor, unsigned long request, int what) {
    if (ioctl(descriptor, request, what) != 0) throw SupportError("cannot describe a virtual keyboard", errno);
}

void describe(int descriptor, const VirtualKeyboard::Form& form) {
    enable(descriptor, UI_SET_EVBIT, EV_KEY);
    enable(descriptor, UI_SET_EVBIT, EV_REP);
    for (int code = KEY_ESC; code <= KEY_COMPOSE; ++code)
        enable(descriptor, UI_SET_KEYBIT, code);
    for (const std::uint16_t code : form.moreKeys)
        enable(descriptor, UI_SET_KEYBIT, code);
    if (form.hasWheel) {
        enable(descriptor, UI_SET_EVBIT, EV_REL);
        for (const int axis : {REL_WHEEL, REL_HWHEEL, REL_WHEEL_HI_RES, REL_HWHEEL_HI_RES})
            enable(descriptor, UI_SET_RELBIT, axis);
    }
    if (form.hasSwitch) {
        enable(descriptor, UI_SET_EVBIT, EV_SW);
        enable(descriptor, UI_SET_SWBIT, SW_TABLET_MODE);
    }
    if (form.hasLeds) {
        enable(descriptor, UI_SET_EVBIT, EV_LED);
        for (const int led : {LED_NUML, LED_CAPSL, LED_SCROLLL})
            enable(descriptor, UI_SET_LEDBIT, led);
    }
}

}  // namespace

VirtualKeyboard::VirtualKeyboard(const Form& form) : descriptor_(open("/dev/uinput", O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
    if (descriptor_ < 0) throw SupportError("no uinput", errno);
    describe(descriptor_, form);
    if (ioctl(descriptor_, UI_SET_PHYS, place) != 0) throw SupportError("cannot place a virtual keyboard", errno);
    uinput_setup setup{.id = {.bustype = BUS_USB, .vendor = vendor, .product = product, .version = 1}};
    form.name.copy(static_cast<char*>(setup.name), sizeof setup.name - 1);
    if (ioctl(descriptor_, UI_DEV_SETUP, &setup) != 0 || ioctl(descriptor_, UI_DEV_CREATE) != 0)
        throw SupportError("cannot make a virtual keyboard", errno);
}

VirtualKeyboard::~VirtualKeyboard() {
    close(descriptor_);
}

void VirtualKeyboard::type(const std::vector<KeyStroke>& strokes) {
    for (const KeyStroke& stroke : strokes)
        send(EV_KEY, stroke.code, stroke.isDown ? 1 : 0);
}

void VirtualKeyboard::turnWheel(std::int32_t steps) {
    report({{.type = EV_REL, .code = REL_WHEEL, .value = steps},
            {.type = EV_REL, .code = REL_WHEEL_HI_RES, .value = finePerStep * steps}});
}

void VirtualKeyboard::send(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    report({{.type = type, .code = code, .value = value}});
}

void VirtualKeyboard::report(std::vector<input_event> events) {
    events.push_back({.type = EV_SYN, .code = SYN_REPORT});
    const std::size_t size = events.size() * sizeof(input_event);
    if (write(descriptor_, events.data(), size) != static_cast<ssize_t>(size))
        throw SupportError("cannot type on a virtual keyboard", errno);
}

bool VirtualKeyboard::isLit(std::uint16_t led) {
    input_event event{};
    while (read(descriptor_, &event, sizeof event) == static_cast<ssize_t>(sizeof event)) {
        if (event.type != EV_LED) continue;
        const std::uint32_t bit = 1U << event.code;
        lit_ = event.value != 0 ? lit_ | bit : lit_ & ~bit;
    }
    return (lit_ & (1U << led)) != 0;
}

}  // namespace quillmere::machine
