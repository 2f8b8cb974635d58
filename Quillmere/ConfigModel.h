#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Switching/InputSources.h"
#include "Quillmere/Switching/KeyInterceptor.h"
#include "QuillmereCore/Config.h"
#include "QuillmereCore/ConfigStore.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The one live, observable configuration, with the sources offered to the
/// editors and the state of a shortcut recording. Every change of the
/// configuration is saved at once. Main thread only.
class ConfigModel : public QObject {
    Q_OBJECT
public:
    /// Loads the stored configuration, or the defaults over the sources of
    /// this moment (which are not saved until something changes). `defaults`
    /// must outlive this.
    ConfigModel(UserDefaults& defaults, const InputSources& sources);

    const Config& config() const { return *config_; }
    /// The same, as a snapshot that later changes leave alone.
    std::shared_ptr<const Config> snapshot() const { return config_; }
    /// Replaces and saves, without comparing: each call writes once.
    void setConfig(Config config);

    /// Whether there is a stored one, be it one that cannot be read.
    bool isStored() const { return store_.isStored(); }

    const std::vector<SourceInfo>& available() const { return available_; }
    void setAvailable(std::vector<SourceInfo> available);

    /// Whether a keyboard may tell of Fn; true until it is found otherwise.
    bool mayHearFn() const { return mayHearFn_; }
    void setMayHearFn(bool may);
    /// Whether a group has Fn alone for its shortcut, which no keyboard tells of.
    bool waitsForFnInVain() const;

    /// The group whose shortcut is being recorded.
    const std::optional<UUID>& recordingGroup() const { return recordingGroup_; }
    /// Who receives the next key presses; empty without a recording.
    const ShortcutHandler& recorder() const { return recorder_; }
    /// Hands key presses to `handler` from now on, in place of any earlier one.
    void startRecording(const UUID& group, ShortcutHandler handler);
    /// Back to normal; nothing without a recording.
    void endRecording();

    /// The display name of a source: the identifier itself when it is not
    /// among the available ones.
    std::string name(const std::string& sourceID) const;

    /// What the keyboard tap must deliver for this state.
    KeyInterest interest() const;
    /// What the shortcuts of that interest go through.
    std::vector<ArmedShortcut> armedShortcuts() const;

    /// Shows a sample plate; set at launch, may be empty.
    std::function<void()> onPreview;

signals:
    /// Each is sent when the new value is in place, before anything is drawn
    /// with it.
    void configChanged();
    void availableChanged();
    void mayHearFnChanged();
    void recordingChanged();

private:
    std::vector<const CycleGroup*> firingGroups() const;

    ConfigStore store_;
    std::vector<SourceInfo> available_;
    std::shared_ptr<const Config> config_;
    bool mayHearFn_ = true;
    std::optional<UUID> recordingGroup_;
    ShortcutHandler recorder_;
};

}  // namespace quillmere
