#pragma once

#include <QApplication>

#include <memory>

namespace quillmere {

/// Makes the application object, on the display that can show all of the
/// program where there is a choice. `argc` and `argv` must outlive it. Once,
/// before everything else; main thread.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv);

}  // namespace quillmere
