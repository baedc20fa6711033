#pragma once

#pragma GCC visibility push(default)

/// Time sources. All may be called from any thread.
namespace Util {

/// Seconds since 1 January 1970, 00:00:00 UTC, by the wall clock. From 19 January 2038 on the count has wrapped and is
/// negative.
[[nodiscard]] int GetTimeSeconds();

/// Milliseconds by the wall clock, modulo 2^32: it wraps about every 49.7 days and starts nowhere in particular, so
/// only differences (in unsigned arithmetic) mean something. They jump when somebody sets the clock.
[[nodiscard]] unsigned int GetTickCountMillis();

/// Seconds of the machine's high-resolution clock, which starts anywhere and only grows.
[[nodiscard]] double GetCycleCountSeconds();

/// The processor's clock rate in hertz modulo 2^32, since the rate was a 32-bit number when this was first used; 0.0
/// where the system tells none.
[[nodiscard]] double GetCPUCyclesPerSecond();

/// Hooks around a stretch of code that is to be timed; `label` names it. They do nothing on this platform.
void TimeMeasureStart(bool enable);
void TimeMeasureEnd(bool enable, const char* label);

}  // namespace Util

#pragma GCC visibility pop
