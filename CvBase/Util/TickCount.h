#pragma once

#pragma GCC visibility push(default)

/// Time sources. All may be called from any thread.
namespace Util {

/// Seconds since 1 January 1970, 00:00:00 UTC, by the wall clock. From 19 January 2038 on the count has wrapped and is
/// negative.
[[nodiscard]] int GetTimeSeconds();

/// Milliseconds by the wall clock, modulo 2^32: it wraps about every 49.7 days and has no particular start, so only
/// differences (in unsigned arithmetic) mean something. They jump when somebody sets the clock.
[[nodiscard]] unsigned int GetTickCountMillis();

/// Seconds of the machine's high-resolution clock, which starts anywhere, only grows, and stands still while the
/// machine sleeps.
[[nodiscard]] double GetCycleCountSeconds();

/// The processor's clock rate in hertz modulo 2^32, as callers know it from the time when the rate was a 32-bit number;
/// 0.0 if the system reports none.
[[nodiscard]] double GetCPUCyclesPerSecond();

/// Hooks to call before and after code to be timed, which `label` names; `enable` false is for leaving it untimed. On
/// this platform they do nothing.
void TimeMeasureStart(bool enable);
void TimeMeasureEnd(bool enable, const char* label);

}  // namespace Util

#pragma GCC visibility pop
