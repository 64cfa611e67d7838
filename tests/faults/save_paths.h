#pragma once
// The ways in which something comes to the disk, each as a row: what is there before, how it is saved, and
// what a process that starts afterwards finds.

#include <string>
#include <vector>

/// What a save that is cut short may leave: old or new, all of it, as a file that takes its name last or
/// behind what was there; behind it with changes not taken back when it was killed or nothing can be done any
/// more; or what it came to.
enum class SaveWay { Whole, Appended, Takes_Back, In_Steps };

struct SavePath {
    const char *name, *before; // "old", or "none" for what is not there yet
    void (*prepare)();         // a fresh machine, once
    bool (*save)();            // may be called again after it has failed
    std::string (*look)();     // "old", "new", "old aside", "partly", or what there is instead
    SaveWay way = SaveWay::Whole;
    bool is_command = false; // whose next save is another process's
    /// How many of its calls are tried at full size, 0 for each: one that saves much in the same way has
    /// thousands.
    unsigned long Calls_To_Try() const { return way == SaveWay::In_Steps ? 200 : 0; }
};

std::vector<SavePath> Library_Save_Paths();
std::vector<SavePath> Command_Save_Paths();

// --- what the rows share: the file that is saved ----------------------------------------------------------

inline constexpr char Target[] = "c:\\target", Former[] = "c:\\before", Expected[] = "c:\\expected";
inline constexpr char Beside[] = ".beside"; // behind the machine's folder, for what is saved beside it

/// "none" for what is not there.
std::string Content_Of(const char *path);
bool Put(const char *path, const std::string &content);
/// What is there, and what will be once it is saved.
void Begin_With(const std::string &content, const std::string &expected);
std::string Look_At_Target();
