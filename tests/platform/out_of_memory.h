#pragma once
// Memory that runs out inside a call of the machine: a code, never an exception, and nothing is left behind.

#include <tests/support/fault_points.h>
#include <tests/support/file_verbs.h>
#include <tests/support/new_failures.h>
#include <tests/support/registry_verbs.h>

#include <functional>
#include <optional>
#include <utility>

struct Call {
    const char *name;
    std::function<bool()> succeeds; // cleans up what it made
};

/// For the length of a scope: for what a call only needs to be there.
class EnoughMemory {
  public:
    EnoughMemory() = default;
    ~EnoughMemory() { allocations_until_failure = failure_; }
    EnoughMemory(const EnoughMemory &) = delete;
    EnoughMemory &operator=(const EnoughMemory &) = delete;

  private:
    const unsigned long failure_ = std::exchange(allocations_until_failure, 0);
};

class OutOfMemoryTest : public FileTest {
  protected:
    static bool With_Code(LONG error) {
        SetLastError(static_cast<DWORD>(error));
        return error == ERROR_SUCCESS;
    }
    /// Each allocation of each call fails in turn.
    void Sweep(const std::vector<Call> &calls) {
        for (const Call &call : calls) {
            ASSERT_TRUE(call.succeeds()) << call.name; // what it needs once is there now
            const unsigned long left = Left();
            points += Each_Fault(
                [&](unsigned long at, bool for_ever) { return Run_With_Failure(call, at, for_ever); });
            EXPECT_EQ(Left(), left) << call.name;
            EXPECT_TRUE(call.succeeds()) << call.name << " no longer works";
        }
        Print_Figure("fault points in calls of the machine", points);
    }
    unsigned long points = 0; // faults that there were

  private:
    static unsigned long Left() {
        return Open_Handle_Count() + Window_Count() + Gdi_Object_Count() + Icon_Count() + Menu_Count();
    }
    /// True when the failure came to pass.
    static bool Run_With_Failure(const Call &call, unsigned long at, bool for_ever) {
        std::optional<bool> done;
        SetLastError(NO_ERROR);
        fails_for_ever = for_ever;
        allocations_until_failure = at;
        try {
            done = call.succeeds();
        } catch (...) {
        }
        const bool reached = allocations_until_failure == 0 || (for_ever && allocations_until_failure == 1);
        allocations_until_failure = 0;
        const DWORD error = GetLastError();
        EXPECT_TRUE(done) << call.name << " let an exception out at allocation " << at;
        if (done == false) {
            EXPECT_EQ(error, static_cast<DWORD>(ERROR_NOT_ENOUGH_MEMORY))
                << call.name << " at allocation " << at;
            EXPECT_TRUE(reached) << call.name << " failed with enough memory";
        }
        return reached;
    }
};
