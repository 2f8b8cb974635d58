#pragma once

#include "Quillmere/Platform/Bundle.h"
#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "QuillmereCore/Config.h"

#include <memory>
#include <optional>
#include <vector>

namespace quillmere {

/// What the doctor asks the system, by the same parts as the program. Asking
/// changes nothing: no tap is taken from a program that has one, no key is
/// grabbed for longer than it takes to find out who has it, nothing is stored.
/// Each call may wait some seconds for those who do not answer. Main thread
/// only.
class Examination {
public:
    Examination() = default;
    Examination(const Examination&) = delete;
    Examination& operator=(const Examination&) = delete;
    virtual ~Examination() = default;

    /// Where the settings are stored, and what is stored there.
    struct Stored {
        Finding finding;
        std::optional<Config> config;  ///< absent when there is none that can be read
    };

    virtual InputSourceService& inputSources() = 0;
    virtual const Bundle& bundle() = 0;

    /// Whether the program runs, and the desktop and its version.
    virtual std::vector<Finding> session() = 0;
    /// Which tap would be used and why not the ones before it, who holds these
    /// shortcuts, and which keyboards tell of Fn.
    virtual std::vector<Finding> keyboard(const std::vector<Shortcut>& shortcuts) = 0;
    virtual Stored stored() = 0;
    /// The tray, and who tells of dark and light.
    virtual std::vector<Finding> surroundings() = 0;
};

/// The running system's own. Needs the application object.
std::unique_ptr<Examination> makeExamination();

}  // namespace quillmere
