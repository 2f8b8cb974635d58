#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/Environment.h"

#include <QDBusConnection>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::support {

/// fcitx 5 with input methods of the test's choice, as its user would have them
/// in its settings.
class Fcitx {
public:
    /// Starts it and waits until it answers. `environment` holds the desktop and
    /// the bus, to which `bus` is a connection; `folder` receives its files.
    Fcitx(const std::filesystem::path& folder, const Environment& environment, const QDBusConnection& bus,
          const std::vector<std::string>& methods);
    ~Fcitx();

    /// Starts it anew, with the methods that it had last.
    void start();
    /// Replaces the methods, as its own settings do.
    void setMethods(const std::vector<std::string>& methods) const;

    /// What it says is in use; empty while no window has asked for input.
    std::string current() const;
    /// Makes this one current, as its own shortcut or panel does.
    void use(const std::string& method) const;

    /// Opens a text field that asks for input, as a program does, and gives it the
    /// focus; by its name `focus` gives it back later.
    QString openField() const;
    void focus(const QString& field) const;

    ChildProcess& process() { return *process_; }

private:
    QVariantList call(const char* method, const QVariantList& arguments = {}) const;

    std::filesystem::path folder_;
    Environment environment_;
    QDBusConnection bus_;
    std::unique_ptr<ChildProcess> process_;
};

}  // namespace quillmere::support
