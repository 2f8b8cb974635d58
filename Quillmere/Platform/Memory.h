#pragma once

namespace quillmere {

/// Returns to the system what the allocator keeps for later: after something
/// large that will not be done again soon. Takes about a millisecond. Any
/// thread.
void giveBackMemory();

}  // namespace quillmere
