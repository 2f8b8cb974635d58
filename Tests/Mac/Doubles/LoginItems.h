#pragma once

/// The system's list of what starts at login, as far as this program is in it.
namespace loginitems {

extern bool isRegistered;
extern bool needsApproval;  ///< the user has turned the registered item off
extern bool refuses;        ///< it can be changed neither way

/// Not registered, and willing.
void reset();

}  // namespace loginitems
