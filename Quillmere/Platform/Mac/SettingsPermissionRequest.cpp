#include "Quillmere/Platform/Mac/SettingsPermissionRequest.h"

#include "Quillmere/Platform/Workspace.h"

#include <QUrl>

namespace quillmere {

QString SettingsPermissionRequest::directions() const {
    return QStringLiteral("Open System Settings, go to Privacy & Security › Accessibility and switch Quillmere on.");
}

void SettingsPermissionRequest::open() {
    workspace_.open(
        QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility")));
}

}  // namespace quillmere
