#include <platform/user/shared_windows.h>

#include <platform/kernel/robust_lock.h>

bool ThreadRow::Lives() const {
    return Is_Held(Word_Of(life).load(std::memory_order_acquire));
}

void ThreadRow::Wake() {
    woken.fetch_add(1, std::memory_order_seq_cst);
    Wake_All(woken);
}

void ThreadRow::Sleep(std::uint32_t seen, DWORD milliseconds) {
    const SleepWord sleep = {&woken, seen};
    Sleep_On(&sleep, 1, milliseconds);
}
