#include "Benchmarks/FcitxField.h"

#include <QDBusMessage>

#include <stdexcept>

namespace quillmere::bench {

namespace {

const QString service = QStringLiteral("org.fcitx.Fcitx5");
const QString interface = QStringLiteral("org.fcitx.Fcitx.InputContext1");

}  // namespace

FcitxField::FcitxField(const QDBusConnection& bus, const QString& path) : bus_(bus), path_(path) {
    moveToThread(&thread_);
    thread_.start();
    if (!bus_.connect(service, path_, interface, QStringLiteral("CurrentIM"), this, SLOT(noteMethod())))
        throw std::runtime_error("fcitx tells a field nothing");
}

FcitxField::~FcitxField() {
    thread_.quit();
    thread_.wait();
}

void FcitxField::pass(const WindowKey& key) const {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path_, interface, QStringLiteral("ProcessKeyEvent"));
    call << key.symbol << key.code << key.state << key.isRelease << key.time;
    bus_.send(call);
}

}  // namespace quillmere::bench
