#pragma once
// One thing that is to happen to the registry, and the making of many.

#include <tools/output.h>
#include <tools/reg/key_path.h>
#include <tools/reg/value.h>

#include <optional>

namespace tools::reg {

/// From `before` to `now`, of which one at least is there. A key that is there is a value whose data is its
/// class.
struct Change {
    KeyPath key;
    bool of_key; // and not of a value
    std::string name;
    std::optional<Value> before, now;
};

/// Makes all changes, in order, and returns when they are on the disk. When one cannot be made, memory
/// runs out or a signal comes, those before it are taken back and Failure, or Interrupted, tells so: nothing
/// has changed then, but that values which were deleted stand behind the others of their key. What cannot be
/// taken back because of a second failure is told by number. A killed process leaves the changes that it came
/// to. A key is deleted only when it is empty: what other programs put there meanwhile is not lost.
void Make_Changes(const std::vector<Change> &changes);

/// Standard output: with `each`, a line for every change; then, always, how many of each kind.
void Print_Changes(const std::vector<Change> &changes, bool each);
/// The same as one JSON object; "changes" is there with `each`.
void Print_Changes_As_Json(const std::vector<Change> &changes, bool each);

} // namespace tools::reg
