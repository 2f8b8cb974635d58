#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Mac/Retained.h"

#include <Carbon/Carbon.h>

namespace quillmere {

/// The input sources that the user has enabled, as Text Input Sources lists
/// them. The system insists on the main thread.
class TextInputSources final : public InputSourceService {
public:
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    int select(const InputSourceRecord& source) override;

private:
    /// The last list, so that selecting from it need not list again.
    Retained<CFArrayRef> listed_;
};

}  // namespace quillmere
