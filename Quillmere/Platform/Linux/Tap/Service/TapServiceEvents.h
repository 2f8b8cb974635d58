#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/KeyEvent.h"
#include "TapService/TapProtocol.h"

#include <optional>

/// Between the program's key numbers and the key-tap service's.
namespace quillmere::TapServiceEvents {

/// What the service must tell for this interest: a shortcut once for every key
/// that has its virtual key code.
tap::Interest interest(const KeyInterest& interest);

/// An event as the tap's callback takes it; absent for one that means nothing
/// there.
std::optional<KeyEventFields> fields(const tap::KeyEvent& event);

}  // namespace quillmere::TapServiceEvents
