// The two functions of Qt's library that have a string of the standard library
// in their names. Elsewhere than on a Mac it has them for another one's strings.
#include <QByteArray>

std::string QByteArray::toStdString() const {
    return {constData(), static_cast<std::size_t>(size())};
}

QByteArray QByteArray::fromStdString(const std::string& text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}
