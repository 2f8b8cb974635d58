#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

namespace quillmere::support {

/// Calls a method and runs the event loop until the answer is there, so that
/// the answering program may meanwhile call services of this very process. An
/// error or silence gives a message whose type is an error.
QDBusMessage callMethod(const QDBusConnection& bus, const QString& service, const QString& path,
                        const QString& interface, const QString& method, const QVariantList& arguments = {});

}  // namespace quillmere::support
