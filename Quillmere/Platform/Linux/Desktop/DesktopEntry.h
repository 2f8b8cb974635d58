#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace quillmere {

/// A desktop entry file, edited line by line: whatever is not changed stays as
/// somebody wrote it, comments and translations included. Only keys of the
/// group "Desktop Entry". After the Desktop Entry Specification 1.5.
class DesktopEntry {
public:
    /// No value when the text has no such group.
    static std::optional<DesktopEntry> parse(const QByteArray& text);
    /// An entry with nothing but its group.
    DesktopEntry();

    QByteArray text() const;

    /// The value without its escapes; absent when the key is.
    std::optional<QString> value(const QByteArray& key) const;
    /// True or false as written; absent for anything else.
    std::optional<bool> boolean(const QByteArray& key) const;
    /// A list separated by semicolons; empty when the key is absent.
    QStringList list(const QByteArray& key) const;

    /// Replaces the value where it stands, or adds the key to the group.
    void set(const QByteArray& key, const QString& value);
    void remove(const QByteArray& key);

    /// The value of "Exec" that starts `program` (an absolute path).
    static QString quoted(const QString& program);
    /// The program that a value of "Exec" starts; empty when it names none.
    static QString program(const QString& exec);

private:
    qsizetype find(const QByteArray& key) const;

    QList<QByteArray> lines_;
    qsizetype begin_ = 0;  ///< the group's first line after its name
};

}  // namespace quillmere
