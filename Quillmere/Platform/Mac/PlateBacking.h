#pragma once

#include "Quillmere/Platform/Mac/Owned.h"
#include "Quillmere/Platform/PlateMaterial.h"

#include <AppKit/AppKit.h>

class QWidget;

namespace quillmere {

/// The native view of a plate: a picture of the content, `scale` pixels a
/// point, on the material asked for.
Owned<NSView> makePlateBacking(QWidget& content, const PlateMaterial& material, double scale);

}  // namespace quillmere
