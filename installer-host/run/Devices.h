#pragma once

namespace host {

/// The machine's devices that the bundle's code may read and write, but not change: root could change their modes, and
/// everybody their times. A mount protects them, and bubblewrap, which mounts them elsewhere, keeps that protection.
constexpr const char* DEVICES[] = {"/dev/null", "/dev/zero", "/dev/full", "/dev/random", "/dev/urandom"};

/// Protects the devices for this process, which must have one thread, and for the program that it becomes. False where
/// the system does not let this user do so.
bool protectDevices();

/// Whether protectDevices() works; a child process tries it.
bool canProtectDevices();

}  // namespace host
