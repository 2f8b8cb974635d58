#include "Quillmere/Platform/Application.h"

#include <AppKit/AppKit.h>

namespace quillmere {

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv) {
    auto application = std::make_unique<QApplication>(argc, argv);
    // The bundle says the same, but Qt makes a program that is started outside
    // of one an ordinary application.
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
    return application;
}

}  // namespace quillmere
