#include <tests/faults/operations/operation.h>

#include <kelmara/containers/iterator.h>
#include <kelmara/containers/list.h>

#include <kelmara/foundation/memory.h>

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
    std::string State() {
        return std::to_string(list.Entries(0)) + "|" +
               std::to_string(copy ? copy->Entries(0) : target.Entries(0));
    }
    CDSList list, target, *copy = nullptr;
};

struct Value {
    Value() { list.Add(1, 0); }
    std::string State() { return std::to_string(list.Entries(0)); }
    CDSList list;
};

const std::vector<Outcome> Throws_Or_Nothing = {Minus_One, Thrown, Nothing};

} // namespace

Operations List_Operations() {
    return {
        Row<Made<CDSList>>("list", 1, Throws, [](auto &of) { return of.thing.emplace(), 1; }),
        Row<Value>("Add", 1, Throws, [](auto &of) { return of.list.Add(2, 0); }),
        Row<Value>("Push", 1, Throws, [](auto &of) { return of.list.Push(2, 0); }),
        Row<Value>("Insert", 1, Throws, [](auto &of) { return of.list.Insert(&of.list, 0, 0); }),
        Row<Subject>("AddVolatile", 1, Throws_Or_Nothing,
                     [](auto &of) { return of.list.AddVolatile(Text, 3, 0) != nullptr; }),
        Row<Subject>("AddCString", 1, Throws_Or_Nothing,
                     [](auto &of) { return of.list.AddCString(Text, 0); }),
        Row<Subject>("PushVolatile", 1, {Nothing}, [](auto &of) { return of.list.PushVolatile(Text, 3, 0); }),
        Row<Subject>("PushCString", 1, Throws_Or_Nothing,
                     [](auto &of) { return of.list.PushCString(Text, 0); }),
        Row<Subject>("AddPString", 1, Throws_Or_Nothing,
                     [](auto &of) { return of.list.AddPString(Pascal_Text, 0); }),
        Row<Subject>("AddStr255", 1, Throws_Or_Nothing,
                     [](auto &of) { return of.list.AddStr255(Pascal_Text, 0); }),
        Row<Subject>("Clone", 1, {Nothing}, [](auto &of) { return (of.copy = of.list.Clone(3)) != nullptr; }),
        Row<Value>("ShallowClone", 1, {Nothing},
                   [](auto &of) {
                       CDSList *const copy = of.list.ShallowClone();
                       const bool made = copy != nullptr;
                       Delete_List(copy);
                       return made;
                   }),
        // "the values before it are in `target`"
        Row<Subject>("ShallowClone to a list", 1, Throws, Partly,
                     [](auto &of) { return of.list.ShallowClone(of.target), 1; }),
    };
}
