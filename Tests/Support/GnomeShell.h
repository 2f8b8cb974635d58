#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"

#include <QDBusConnection>
#include <QImage>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::support {

/// A desktop of one's own: GNOME's Shell, without a screen.
class GnomeShell {
public:
    struct Options {
        /// The person's input sources, "xkb:us+dvorak" or "ibus:libpinyin".
        std::vector<std::string> sources{"xkb:us", "xkb:ua", "xkb:de"};
        /// The folder of a packed extension's forms, of which the fitting one is
        /// unpacked for the person and switched on; empty: a stock desktop.
        std::filesystem::path extension;
        bool hasXwayland = false;
        /// The X server to be the desktop of (":7"), as GNOME on Xorg is; empty: it
        /// is a Wayland compositor.
        std::string xServer;
    };

    /// Starts it on this bus and waits until it serves, with its extension on
    /// and its overview gone. `folder` receives its files.
    GnomeShell(const std::filesystem::path& folder, const Environment& environment, const SessionBus& bus,
               const Options& options);
    ~GnomeShell();

    /// Starts it again, once it was killed.
    void start();

    /// What a program of this desktop finds in its environment.
    const Environment& environment() const { return environment_; }
    /// For WAYLAND_DISPLAY: an absolute path. Not on an X server.
    std::string waylandDisplay() const;
    /// For DISPLAY: its Xwayland's, or its X server's; empty without either.
    const std::string& xDisplay() const { return xDisplay_; }
    /// Whether one of an extension's forms in this folder is for this version.
    bool fits(const std::filesystem::path& forms) const;
    /// Whether one of the options' forms is for this version; without it this is
    /// a stock desktop.
    bool hasExtension() const { return !form_.empty(); }
    /// The extension of the options, as the shell knows it.
    static constexpr const char* extensionName = "quillmere@quillmere.org";
    /// Where the person's extensions are unpacked.
    std::filesystem::path extensionsFolder() const;

    /// That is installed here: 43 or later.
    int version() const { return version_; }

    /// What the person does in the desktop's settings: replaces the sources.
    void setSources(const std::vector<std::string>& sources) const;
    /// Writes one of the desktop's settings, the value as GVariant's text.
    void setSetting(const std::string& schema, const std::string& key, const std::string& value) const;
    /// Reads it, in the same form.
    std::string setting(const std::string& schema, const std::string& key) const;

    /// Runs a piece of JavaScript within the shell, and returns its value as
    /// JSON. Throws when it fails.
    std::string evaluate(const std::string& script) const;
    /// The place of the source in use among the person's; -1 for none.
    int sourceInUse() const;
    /// What a person's own way of switching does: puts this source into use.
    void useSource(int index) const;

    /// A picture of the whole screen.
    QImage screenshot() const;

    ChildProcess& process() { return *process_; }

private:
    void prepareHome() const;
    void leaveOutIbus();
    void installExtension() const;
    void startSettings();
    void startOnX();
    void waitUntilUp() const;
    void takeXDisplay();
    ChildProcess::Options asUser(const std::vector<std::string>& arguments, const std::string& output) const;
    /// Runs a program to its end, and returns what it writes.
    std::string outputOf(const std::vector<std::string>& arguments) const;

    std::filesystem::path folder_;
    Environment environment_;
    QDBusConnection bus_;
    Options options_;
    std::unique_ptr<SessionBus> systemBus_;
    std::unique_ptr<ChildProcess> settingsService_;
    std::unique_ptr<ChildProcess> process_;
    int version_ = 0;
    std::filesystem::path form_;
    std::string xDisplay_;
    std::optional<OwnVariable> xAuthority_;  ///< the tests are clients of its Xwayland, too
};

}  // namespace quillmere::support
