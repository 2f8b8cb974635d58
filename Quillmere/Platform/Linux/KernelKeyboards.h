#pragma once

#include "Quillmere/Platform/Keyboards.h"
#include "TapService/KeySet.h"

#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// A keyboard to type on, as the kernel describes it: what it could send, not
/// what it does.
struct KernelKeyboard {
    std::string name;
    tap::KeySet keys;

    bool tellsOfFn() const;
};

/// Those of the kernel's list, which is in the form of /proc/bus/input/devices.
std::vector<KernelKeyboard> kernelKeyboards(std::string_view devices);

/// The kernel's list of this moment, which anybody may read; empty where there
/// is none.
std::string kernelInputDevices();

/// The keyboards that the kernel knows. Where it knows none, nothing is said of
/// Fn: the keys come from elsewhere then, from afar or another machine.
class KernelKeyboards final : public Keyboards {
public:
    bool mayTellOfFn() const override;
};

}  // namespace quillmere
