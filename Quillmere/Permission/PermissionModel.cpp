#include "Quillmere/Permission/PermissionModel.h"

namespace quillmere {

void PermissionModel::setState(PermissionGate::State state) {
    if (state == state_) return;
    state_ = state;
    emit stateChanged();
}

}  // namespace quillmere
