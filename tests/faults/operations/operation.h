#pragma once
// One row of the table of the library's operations that need memory.
//
//     struct String {
//         CSafeStr text{"before"};
//         std::string State() { return static_cast<char *>(text); }
//     };
//     Row<String>("assignment", 0, {Thrown}, [](auto &of) { of.text = Long_Text.c_str(); })
//
// What operates must not allocate itself. Each preparation is a subject of its own, made of nothing.

#include <platform/errors.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct Outcome {
    enum Kind { Given, Thrown_Int, Thrown_Long, Thrown_Otherwise } kind = Given;
    long value = 0;
    bool operator==(const Outcome &) const = default;
};
inline constexpr Outcome Minus_One = {Outcome::Thrown_Int, -1};
inline constexpr Outcome Thrown = {Outcome::Thrown_Long, E_OUTOFMEMORY};
inline constexpr Outcome No_Memory = {Outcome::Given, E_OUTOFMEMORY};
inline constexpr Outcome Nothing = {Outcome::Given, 0}; // null, false
inline const std::vector<Outcome> Throws = {Minus_One, Thrown};
constexpr Outcome Gives(long value) {
    return {Outcome::Given, value};
}

/// What a fault leaves, by the decision of the header: what was there before, or what stands here. A state is
/// parts with a '|' behind each, which go by the name in front of their '=', or by their place.
struct Leaves {
    bool told = true;      // what it gives with enough memory says that all is done; if not, all may be
    bool in_parts = false; // what was done up to the fault stays: each part is as before or as afterwards
    std::vector<std::string> also = {}; // parts that may stand there, too
    bool repeats = true;                // without the fault it does all when it is called again
};
inline const Leaves Before = {}, Either = {.told = false}, Partly = {.in_parts = true},
                    Partly_Untold = {.told = false, .in_parts = true};
inline Leaves Or(Leaves leaves, std::vector<std::string> also) {
    leaves.in_parts = true;
    leaves.also = std::move(also);
    return leaves;
}
inline Leaves Once(Leaves leaves) {
    leaves.repeats = false;
    return leaves;
}

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

/// `operate` gives a number, or nothing, which is 0. A subject without State has none to lose.
template <class Subject, class Operate>
Operation Row(const char *name, long done, std::vector<Outcome> stated, Leaves leaves, Operate operate) {
    return {name, done, std::move(stated), leaves, [operate] {
                auto subject = std::make_shared<Subject>();
                const auto give = [=]() -> long {
                    if constexpr (std::is_void_v<decltype(operate(*subject))>)
                        return operate(*subject), 0;
                    else
                        return static_cast<long>(operate(*subject));
                };
                return Trial{give, [=] {
                                 if constexpr (requires { subject->State(); })
                                     return std::string(subject->State());
                                 else
                                     return std::string();
                             }};
            }};
}

template <class Subject, class Operate>
Operation Row(const char *name, long done, std::vector<Outcome> stated, Operate operate) {
    return Row<Subject>(name, done, std::move(stated), Before, operate);
}

/// What a constructor makes, to be emplaced by its row.
template <class Thing>
struct Made {
    std::string State() { return thing ? "made" : "none"; }
    std::optional<Thing> thing;
};

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
Operations Bound_Control_Operations();
Operations Connectivity_Operations();
