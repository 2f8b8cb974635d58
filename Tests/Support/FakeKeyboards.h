#pragma once

#include "Quillmere/Platform/Keyboards.h"

namespace quillmere {

class FakeKeyboards : public Keyboards {
public:
    bool mayTellOfFn() const override { return tellOfFn; }

    bool tellOfFn = true;
};

}  // namespace quillmere
