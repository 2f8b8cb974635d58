#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/KeyEvent.h"
#include "Quillmere/Switching/InputSources.h"
#include "QuillmereCore/Config.h"
#include "QuillmereCore/FnGesture.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>

namespace quillmere {

/// Receives a key press while a shortcut is being recorded.
using ShortcutHandler = std::function<void(std::int64_t keyCode, Modifiers modifiers)>;

/// Decides for each keyboard event whether it passes or is swallowed, and
/// switches the input source when a group's shortcut is pressed or Fn is
/// tapped alone. Main thread only.
class KeyInterceptor {
public:
    /// The live configuration at this moment, one snapshot; never null.
    using ConfigProvider = std::function<std::shared_ptr<const Config>()>;
    /// The running recording's handler; empty when there is no recording.
    using RecordProvider = std::function<ShortcutHandler()>;
    /// A source was selected. The group belongs to the snapshot and lives for
    /// the call.
    using SwitchCallback = std::function<void(const CycleGroup& group, const std::string& selectedID)>;

    /// `tap` and the service behind `sources` must outlive this. Does not
    /// touch the platform.
    KeyInterceptor(EventTap& tap, InputSources sources, ConfigProvider config, RecordProvider record,
                   SwitchCallback onSwitch);

    /// Installs the tap; true when it is, already or now, installed and delivers
    /// all that is wanted of it. May be called again after a failure.
    bool start();

    /// Decides one event.
    InterceptDecision handle(const KeyEventFields& event);

private:
    InterceptDecision handleKeyDown(const KeyEventFields& event, double time);
    void handleFlags(const KeyEventFields& event, double time);
    void handleFnTap();
    /// Selects the source that follows the current one and reports it.
    void fire(const Config& config, const CycleGroup& group, const Shortcut& shortcut);

    EventTap& tap_;
    InputSources sources_;
    bool installed_ = false;
    /// Keys whose press was swallowed and whose release must be too.
    std::set<std::int64_t> swallowed_;
    FnGesture fnGesture_;
    bool fnDown_ = false;
    ConfigProvider config_;
    RecordProvider record_;
    SwitchCallback onSwitch_;
};

}  // namespace quillmere
