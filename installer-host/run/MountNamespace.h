#pragma once

namespace host {

/// Moves this process, which must have one thread, into a mount namespace of its own, in which it may mount: what it
/// mounts there, nobody else sees. An ordinary user needs a user namespace for that, in which his number stays the
/// same. False where the system does not let this user have one; the process may then be in one of the two.
bool enterMountNamespace();

}  // namespace host
