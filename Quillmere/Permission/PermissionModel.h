#pragma once

#include "QuillmereCore/PermissionGate.h"

#include <QObject>

namespace quillmere {

/// What the permission window shows. Main thread only.
class PermissionModel : public QObject {
    Q_OBJECT
public:
    PermissionGate::State state() const { return state_; }
    void setState(PermissionGate::State state);

signals:
    void stateChanged();

private:
    PermissionGate::State state_ = PermissionGate::State::needed;
};

}  // namespace quillmere
