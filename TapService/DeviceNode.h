#pragma once

#include "TapService/Handles.h"

#include <string>

namespace quillmere::tap {

/// Opens the node of a device (as "/dev/input/event3") for reading and
/// writing; none, with errno, when that is not possible. The kernel gives the
/// node of a device that has gone to the next one, while its place in sysfs
/// (`path`) never comes back: a node that no longer belongs to that place is
/// not opened (ESTALE).
FileDescriptor openDeviceNode(const std::string& node, const std::string& path);

}  // namespace quillmere::tap
