#pragma once

#include "Quillmere/Platform/InputSourceService.h"

namespace quillmere {

/// The input sources of one kind of desktop, which may come and go while the
/// program runs. Main thread only.
class DesktopInputSources : public InputSourceService {
public:
    /// Whether this kind of desktop is there at this moment, as far as is known
    /// without asking anybody.
    virtual bool isAvailable() = 0;
};

}  // namespace quillmere
