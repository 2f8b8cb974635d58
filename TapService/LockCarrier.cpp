#include "TapService/LockCarrier.h"

namespace quillmere::tap {

namespace {

struct Lock {
    std::uint16_t light;
    std::uint16_t key;
};

constexpr Lock locks[] = {{LED_CAPSL, KEY_CAPSLOCK}, {LED_NUML, KEY_NUMLOCK}};

}  // namespace

bool LockCarrier::takeOver(const Lights& original, const Lights& clone) {
    carried_.clear();
    for (const auto& [light, key] : locks) {
        // One that is lit on the clone alone may be the text console's doing.
        if (!original.test(light) || clone.test(light)) continue;
        carried_.push_back({light, key});
        tap_(key);
    }
    return !carried_.empty();
}

void LockCarrier::check(const Lights& original) {
    for (const Carried& carried : std::exchange(carried_, {})) {
        if (!original.test(carried.light)) tap_(carried.key);
    }
}

void LockCarrier::pressed(std::uint16_t key) {
    std::erase_if(carried_, [key](const Carried& carried) { return carried.key == key; });
}

}  // namespace quillmere::tap
