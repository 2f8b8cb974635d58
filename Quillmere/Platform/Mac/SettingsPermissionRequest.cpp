#include "Quillmere/Platform/Mac/SettingsPermissionRequest.h"

#include "Quillmere/Platform/Workspace.h"

#include <QUrl>

namespace quillmere {

void SettingsPermissionRequest::open() {
    workspace_.open(
        QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility")));
}

}  // namespace quillmere
