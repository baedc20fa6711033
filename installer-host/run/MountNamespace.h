#pragma once

namespace host {

/// Moves this process into a mount namespace of its own: what it mounts there, nobody else sees. False where the system
/// does not let it, as it lets root alone.
bool enterMountNamespace();

/// The same for everybody, by way of a user namespace in which the user's number stays the same, and no other is known.
/// The process must have one thread. False where the system does not allow it; the process is of no use any more then.
bool enterUserNamespace();

}  // namespace host
