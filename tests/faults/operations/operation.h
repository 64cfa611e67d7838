#pragma once
// One row of the table of the library's operations that need memory.
//
//     Row("assignment", 0, {Throws_No_Memory}, [] { return std::make_shared<CSafeStr>("before"); },
//         [](CSafeStr &string) { return string = Long_Text, 0L; },
//         [](CSafeStr &string) { return std::string(static_cast<char *>(string)); })
//
// What operates must not allocate itself. Each preparation is a subject of its own.

#include <platform/errors.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct Outcome {
    enum Kind { Given, Thrown_Int, Thrown_Long, Thrown_Otherwise } kind = Given;
    long value = 0;
    bool operator==(const Outcome &) const = default;
};
inline constexpr Outcome Throws_Minus_One = {Outcome::Thrown_Int, -1};
inline constexpr Outcome Throws_No_Memory = {Outcome::Thrown_Long, E_OUTOFMEMORY};
inline constexpr Outcome Gives_No_Memory = {Outcome::Given, E_OUTOFMEMORY};
inline constexpr Outcome Gives_Nothing = {Outcome::Given, 0}; // null, false
constexpr Outcome Gives(long value) {
    return {Outcome::Given, value};
}

/// What a fault leaves, by the decision of the header.
enum class Leaves {
    Before, // told: the state of before. Not told: all is done
    Either, // the fault may stay untold, and then all is done or nothing
    Partly, // what was done up to the fault stays
};

struct Trial {
    std::function<long()> operate;
    std::function<std::string()> state;
};

struct Operation {
    const char *name;
    long done; // what it gives with enough memory
    std::vector<Outcome> stated;
    Leaves leaves;
    std::function<Trial()> prepare;
};
using Operations = std::vector<Operation>;

template <class Prepare, class Operate, class State>
Operation Row(const char *name, long done, std::vector<Outcome> stated, Prepare prepare, Operate operate,
              State state, Leaves leaves = Leaves::Before) {
    return {name, done, std::move(stated), leaves, [=] {
                auto subject = prepare();
                return Trial{[=] { return static_cast<long>(operate(*subject)); },
                             [=] { return std::string(state(*subject)); }};
            }};
}

inline const std::string Long_Text(600, 'l'); // more than a string holds inside

Operations Text_Operations();
Operations List_Operations();
Operations Table_Operations(); // hash tables, smart buffers
Operations Content_Operations();
Operations Localization_Operations();
Operations File_Operations();
Operations Registry_Operations();
Operations Shared_State_Operations();
Operations Suite_Operations();
Operations Dialog_Operations();
