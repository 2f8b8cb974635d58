#include "Quillmere/Platform/Linux/Desktop/DesktopEntry.h"

#include <algorithm>

namespace quillmere {

namespace {

const QByteArray groupName = "[Desktop Entry]";

QByteArray escaped(const QString& value) {
    QString text = value;
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    text.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    return text.toUtf8();
}

QString unescaped(const QByteArray& text) {
    QString value;
    const QString escapes = QString::fromUtf8(text);
    for (qsizetype i = 0; i < escapes.size(); ++i) {
        if (escapes[i] != QLatin1Char('\\') || i + 1 == escapes.size()) {
            value += escapes[i];
            continue;
        }
        const char16_t next = escapes[++i].unicode();
        value += next == 's' ? u' ' : next == 'n' ? u'\n' : next == 't' ? u'\t' : next == 'r' ? u'\r' : QChar(next);
    }
    return value;
}

QByteArray keyOf(const QByteArray& line) {
    const qsizetype equals = line.indexOf('=');
    return equals < 0 || line.startsWith('#') ? QByteArray() : line.left(equals).trimmed();
}

}  // namespace

DesktopEntry::DesktopEntry() : lines_{groupName}, begin_(1) {}

std::optional<DesktopEntry> DesktopEntry::parse(const QByteArray& text) {
    DesktopEntry entry;
    entry.lines_ = text.split('\n');
    if (entry.lines_.back().isEmpty()) entry.lines_.removeLast();
    const auto group =
        std::ranges::find(entry.lines_, groupName, [](const QByteArray& line) { return line.trimmed(); });
    if (group == entry.lines_.end()) return std::nullopt;
    entry.begin_ = group - entry.lines_.begin() + 1;
    return entry;
}

QByteArray DesktopEntry::text() const {
    return lines_.join('\n') + '\n';
}

qsizetype DesktopEntry::find(const QByteArray& key) const {
    for (qsizetype i = begin_; i < lines_.size() && !lines_[i].startsWith('['); ++i)
        if (keyOf(lines_[i]) == key) return i;
    return -1;
}

std::optional<QString> DesktopEntry::value(const QByteArray& key) const {
    const qsizetype line = find(key);
    if (line < 0) return std::nullopt;
    return unescaped(lines_[line].mid(lines_[line].indexOf('=') + 1).trimmed());
}

std::optional<bool> DesktopEntry::boolean(const QByteArray& key) const {
    const std::optional<QString> text = value(key);
    if (text == QLatin1String("true")) return true;
    if (text == QLatin1String("false")) return false;
    return std::nullopt;
}

QStringList DesktopEntry::list(const QByteArray& key) const {
    return value(key).value_or(QString()).split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

void DesktopEntry::set(const QByteArray& key, const QString& value) {
    const QByteArray line = key + '=' + escaped(value);
    const qsizetype place = find(key);
    if (place >= 0) {
        lines_[place] = line;
        return;
    }
    qsizetype end = begin_;
    for (qsizetype i = begin_; i < lines_.size() && !lines_[i].startsWith('['); ++i)
        if (!lines_[i].trimmed().isEmpty()) end = i + 1;
    lines_.insert(end, line);
}

void DesktopEntry::remove(const QByteArray& key) {
    for (qsizetype line = find(key); line >= 0; line = find(key))
        lines_.removeAt(line);
}

QString DesktopEntry::quoted(const QString& program) {
    const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    QString text;
    bool isReserved = false;
    for (const QChar character : program) {
        isReserved |= reserved.contains(character);
        if (QStringLiteral("\"`$\\").contains(character)) text += QLatin1Char('\\');
        if (character == QLatin1Char('%')) text += QLatin1Char('%');  // else it starts a field code
        text += character;
    }
    return isReserved ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

QString DesktopEntry::program(const QString& exec) {
    const QString text = exec.trimmed();
    const bool isQuoted = text.startsWith(QLatin1Char('"'));
    QString program;
    for (qsizetype i = isQuoted ? 1 : 0; i < text.size(); ++i) {
        if (isQuoted ? text[i] == QLatin1Char('"') : text[i].isSpace()) break;
        const bool isEscape = isQuoted && text[i] == QLatin1Char('\\') && i + 1 < text.size();
        const bool isPercent = text[i] == QLatin1Char('%') && text.mid(i + 1, 1) == QLatin1String("%");
        if (isEscape || isPercent) ++i;
        program += text[i];
    }
    return program;
}

}  // namespace quillmere
