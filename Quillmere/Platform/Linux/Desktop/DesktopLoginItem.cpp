#include "Quillmere/Platform/Linux/Desktop/DesktopLoginItem.h"

#include "Quillmere/Platform/Linux/Desktop/DesktopEntry.h"
#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <optional>
#include <utility>

namespace quillmere {

namespace {

const QString fileName = QStringLiteral("quillmere.desktop");

std::optional<DesktopEntry> read(const QString& path) {
    if (path.isEmpty()) return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    return DesktopEntry::parse(file.readAll());
}

bool write(const QString& path, const DesktopEntry& entry) {
    if (!QDir().mkpath(QFileInfo(path).path())) return false;
    const QByteArray text = entry.text();
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
}

bool isProgram(const QString& name) {
    return !name.isEmpty() && !QStandardPaths::findExecutable(name).isEmpty();
}

/// Whether an entry's lists of desktops admit the running one.
bool isForThisDesktop(const DesktopEntry& entry) {
    const std::vector<std::string> desktops = LinuxSession::current().desktops;
    const auto names = [&](const QByteArray& key) {
        const QStringList wanted = entry.list(key);
        return std::ranges::any_of(
            desktops, [&](const std::string& desktop) { return wanted.contains(QString::fromStdString(desktop)); });
    };
    return (!entry.value("OnlyShowIn") || names("OnlyShowIn")) && !names("NotShowIn");
}

QStringList systemAutostartFolders() {
    const QString folders = qEnvironmentVariable("XDG_CONFIG_DIRS", QStringLiteral("/etc/xdg"));
    QStringList autostart;
    for (const QString& folder : folders.split(QLatin1Char(':'), Qt::SkipEmptyParts))
        autostart += folder + QLatin1String("/autostart");
    return autostart;
}

QString userAutostartFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return folder.isEmpty() ? folder : folder + QLatin1String("/autostart");
}

}  // namespace

DesktopLoginItem::DesktopLoginItem()
    : DesktopLoginItem(QCoreApplication::applicationFilePath(), userAutostartFolder(), systemAutostartFolders()) {}

DesktopLoginItem::DesktopLoginItem(QString program, QString userFolder, QStringList systemFolders)
    : program_(std::move(program)), userFolder_(std::move(userFolder)), systemFolders_(std::move(systemFolders)) {}

QString DesktopLoginItem::userFile() const {
    return userFolder_ + QLatin1Char('/') + fileName;
}

QString DesktopLoginItem::systemFile() const {
    for (const QString& folder : systemFolders_)
        if (const QString path = folder + QLatin1Char('/') + fileName; QFile::exists(path)) return path;
    return {};
}

bool DesktopLoginItem::startsAtLogin(const DesktopEntry& entry) const {
    if (entry.boolean("Hidden").value_or(false)) return false;
    if (!entry.boolean("X-GNOME-Autostart-enabled").value_or(true)) return false;
    if (const auto required = entry.value("TryExec"); required && !isProgram(*required)) return false;
    return isForThisDesktop(entry) && isProgram(DesktopEntry::program(entry.value("Exec").value_or(QString())));
}

QString DesktopLoginItem::requirement() const {
    return QStringLiteral("Needs a home folder to note it in");
}

bool DesktopLoginItem::isEnabled() const {
    // the user's entry replaces the system's, also when it cannot be read
    const QString path = QFile::exists(userFile()) ? userFile() : systemFile();
    const std::optional<DesktopEntry> entry = read(path);
    return entry && startsAtLogin(*entry);
}

bool DesktopLoginItem::setEnabled(bool enabled) {
    if (!isAvailable()) return false;
    const bool isDone = enabled ? enable() : disable();
    return isDone && isEnabled() == enabled;
}

DesktopEntry DesktopLoginItem::freshEntry() const {
    DesktopEntry entry;
    entry.set("Type", QStringLiteral("Application"));
    entry.set("Name", QStringLiteral("Quillmere"));
    entry.set("Comment", QStringLiteral("Switches keyboard layouts with shortcuts"));
    entry.set("Exec", DesktopEntry::quoted(program_));
    entry.set("Icon", QStringLiteral("quillmere"));
    entry.set("Terminal", QStringLiteral("false"));
    return entry;
}

DesktopEntry DesktopLoginItem::enabledEntry(DesktopEntry entry) const {
    entry.remove("Hidden");
    if (!entry.boolean("X-GNOME-Autostart-enabled").value_or(true)) entry.remove("X-GNOME-Autostart-enabled");
    if (const auto required = entry.value("TryExec"); required && !isProgram(*required)) entry.remove("TryExec");
    if (!isForThisDesktop(entry)) {
        entry.remove("OnlyShowIn");
        entry.remove("NotShowIn");
    }
    // somebody may start this very program through a wrapper, or later
    const QString exec = entry.value("Exec").value_or(QString());
    if (!exec.contains(program_) || !isProgram(DesktopEntry::program(exec)))
        entry.set("Exec", DesktopEntry::quoted(program_));
    return entry;
}

bool DesktopLoginItem::enable() const {
    const std::optional<DesktopEntry> present = read(userFile());
    return write(userFile(), present ? enabledEntry(*present) : freshEntry());
}

bool DesktopLoginItem::disable() const {
    const std::optional<DesktopEntry> present = read(userFile());
    const bool isEdited = present && present->text() != freshEntry().text();
    if (!isEdited && systemFile().isEmpty()) return !QFile::exists(userFile()) || QFile::remove(userFile());
    DesktopEntry entry = present.value_or(freshEntry());
    entry.set("Hidden", QStringLiteral("true"));
    return write(userFile(), entry);
}

}  // namespace quillmere
