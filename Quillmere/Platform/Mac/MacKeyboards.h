#pragma once

#include "Quillmere/Platform/Keyboards.h"

namespace quillmere {

/// The keyboards of a Mac, whose own all tell of Fn.
class MacKeyboards final : public Keyboards {
public:
    bool mayTellOfFn() const override { return true; }
};

}  // namespace quillmere
