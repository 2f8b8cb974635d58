#pragma once

#include "Quillmere/Platform/Workspace.h"

#include <QUrl>
#include <QWidget>

#include <string>
#include <vector>

namespace quillmere {

/// A desktop that records what the program asks of it.
class FakeWorkspace : public Workspace {
public:
    bool open(const QUrl& url) override {
        opened.push_back(url);
        return hasHandler;
    }
    void beep() override { ++beeps; }
    std::vector<std::string> preferredLanguages() const override { return languages; }
    void blendTitleBar(QWidget& window, const QColor& /*light*/, const QColor& /*dark*/) override {
        blended.push_back(&window);
    }
    void bringToFront(QWidget& window) override {
        window.show();
        broughtToFront.push_back(&window);
    }

    std::vector<QUrl> opened;
    bool hasHandler = true;  ///< for addresses
    int beeps = 0;
    std::vector<std::string> languages{"en"};
    std::vector<QWidget*> blended;
    std::vector<QWidget*> broughtToFront;
};

}  // namespace quillmere
