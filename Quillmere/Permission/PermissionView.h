#pragma once

#include "Quillmere/Permission/PermissionModel.h"

#include <QWidget>

#include <functional>
#include <memory>

class QVBoxLayout;

namespace quillmere {

/// The content of the permission window: what is missing and how to give it,
/// or that all is well. 420 points wide and as high as that needs; it follows
/// the model.
class PermissionView : public QWidget {
public:
    struct Actions {
        std::function<void()> onOpenSettings;
        std::function<void()> onQuit;
        std::function<void()> onDone;
    };

    /// `directions`: what the user is to do.
    PermissionView(std::shared_ptr<const PermissionModel> model, QString directions, Actions actions,
                   QWidget* parent = nullptr);

private:
    void refresh();
    QWidget* makeNeeded();
    QWidget* makeGranted();

    std::shared_ptr<const PermissionModel> model_;
    QString directions_;
    Actions actions_;
    QVBoxLayout* frame_;
    QWidget* content_ = nullptr;  ///< what the state asks for
};

}  // namespace quillmere
