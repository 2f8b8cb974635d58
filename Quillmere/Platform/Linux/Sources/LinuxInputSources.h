#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"
#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"

#include <memory>
#include <vector>

namespace quillmere {

/// The input sources of the desktop that the program runs on, whichever of the
/// known kinds it is at this moment: a desktop's programs start after this one,
/// end and come back. On a desktop of no known kind there are none: the layouts
/// of the X server that a Wayland desktop runs for old programs are not the
/// desktop's. Main thread only.
class LinuxInputSources final : public InputSourceService {
public:
    /// In the order of who is asked first; those that are null are left out.
    explicit LinuxInputSources(std::vector<std::unique_ptr<DesktopInputSources>> kinds);

    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    int select(const InputSourceRecord& source) override;

private:
    template <typename Answer, typename Ask>
    Answer ask(Answer none, const Ask& question);

    std::vector<std::unique_ptr<DesktopInputSources>> kinds_;
};

/// Those of this session, and of the input methods beside them.
std::unique_ptr<ComposedInputSources> makeLinuxInputSources();

}  // namespace quillmere
