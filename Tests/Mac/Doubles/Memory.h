#pragma once

/// The allocator's zones.
namespace memory {

/// How often every zone was asked to give back all it can.
int reliefs();

}  // namespace memory
