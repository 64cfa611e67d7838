#pragma once
// What happens to windows whose thread has ended.

#include <platform/user/thread_queue.h>

/// Takes them out of the tree without asking their procedures.
void Remove_Windows_Of(ThreadQueue &queue);

/// Takes one window out of everything that leads to it. The caller holds the tree's lock.
void Take_Out(Window &window);
