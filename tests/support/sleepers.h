#pragma once
// Whether a thread has come to where it waits.

#include <platform/kernel.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

/// A thread of this process, or of another one by its number, that waits for something.
inline bool Is_Asleep(int thread, int process = 0) {
    const std::string whose = process ? std::to_string(process) : "self";
    std::ifstream status("/proc/" + whose + "/task/" + std::to_string(thread) + "/stat");
    std::string word;
    while (status >> word && word.back() != ')') {
    }
    return status >> word && word == "S";
}

/// Fails after 30 seconds, also for one that has ended.
inline void Wait_Until_Asleep(int thread, int process = 0) {
    for (int left = 30000; !Is_Asleep(thread, process); Sleep(1)) {
        if (--left == 0) return ADD_FAILURE() << "thread " << thread << " never waits", void();
    }
}
