#include <tests/faults/operations/operation.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/containers/list.h>

#include <kelmara/foundation/memory.h>

#include <optional>

namespace {

char Text[] = "\4text";
unsigned char *const Pascal_Text = reinterpret_cast<unsigned char *>(Text);

/// A list that owns its entries, and what was made of it.
struct Subject {
    Subject() {
        for (int i = 0; i < 3; ++i) list.AddVolatile(Text, sizeof Text, 0);
    }
    ~Subject() {
        if (copy) copy->DeleteAllEntriesAsPointers(0);
        Delete_List(copy);
        target.Clear(0);
        list.DeleteAllEntriesAsPointers(0);
    }
    CDSList list, target, *copy = nullptr;
};

struct Value {
    Value() { list.Add(1, 0); }
    CDSList list;
};

const std::vector<Outcome> Throws = {Throws_Minus_One, Throws_No_Memory};
const std::vector<Outcome> Throws_Or_Nothing = {Throws_Minus_One, Throws_No_Memory, Gives_Nothing};

template <class Operate>
Operation Copying(const char *name, std::vector<Outcome> stated, Operate operate) {
    return Row(
        name, 1, stated, [] { return std::make_shared<Subject>(); }, operate,
        [](Subject &of) {
            return std::to_string(of.list.Entries(0)) + (of.copy ? std::to_string(of.copy->Entries(0)) : "");
        });
}

template <class Operate>
Operation Adding(const char *name, Operate operate) {
    return Row(
        name, 1, Throws, [] { return std::make_shared<Value>(); },
        [=](Value &of) { return operate(of.list); },
        [](Value &of) { return std::to_string(of.list.Entries(0)); });
}

} // namespace

Operations List_Operations() {
    return {
        Adding("Add", [](CDSList &list) { return list.Add(2, 0); }),
        Adding("Push", [](CDSList &list) { return list.Push(2, 0); }),
        Adding("Insert", [](CDSList &list) { return list.Insert(&list, 0, 0); }),
        Copying("AddVolatile", Throws_Or_Nothing,
                [](Subject &of) { return of.list.AddVolatile(Text, 3, 0) != nullptr; }),
        Copying("AddCString", Throws_Or_Nothing, [](Subject &of) { return of.list.AddCString(Text, 0); }),
        Copying("PushVolatile", {Gives_Nothing},
                [](Subject &of) { return of.list.PushVolatile(Text, 3, 0); }),
        Copying("PushCString", Throws_Or_Nothing, [](Subject &of) { return of.list.PushCString(Text, 0); }),
        Copying("AddPString", Throws_Or_Nothing,
                [](Subject &of) { return of.list.AddPString(Pascal_Text, 0); }),
        Copying("AddStr255", Throws_Or_Nothing,
                [](Subject &of) { return of.list.AddStr255(Pascal_Text, 0); }),
        Copying("Clone", {Gives_Nothing},
                [](Subject &of) { return (of.copy = of.list.Clone(3)) != nullptr; }),
        Row(
            "ShallowClone", 1, {Gives_Nothing}, [] { return std::make_shared<Value>(); },
            [](Value &of) {
                CDSList *const copy = of.list.ShallowClone();
                const bool made = copy != nullptr;
                Delete_List(copy);
                return made;
            },
            [](Value &of) { return std::to_string(of.list.Entries(0)); }),
        // "the values before it are in `target`"
        Row(
            "ShallowClone to a list", 1, Throws, [] { return std::make_shared<Subject>(); },
            [](Subject &of) { return of.list.ShallowClone(of.target), 1; },
            [](Subject &of) { return std::to_string(of.list.Entries(0)); }, Leaves::Partly),
    };
}
