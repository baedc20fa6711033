#pragma once

#include <thread>
#include <vector>

namespace test {

/// Calls `work` on `count` threads at once, each time with the thread's number, and waits for them.
template <typename Work>
void onThreads(int count, Work work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace test
