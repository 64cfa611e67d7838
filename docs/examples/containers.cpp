// A list walked and changed on the way, a table of texts, a buffer that is edited.
#include <kelmara/kelmara.h>

#include <cstdio>

int main() {
    CDSList list;
    for (int number = 1; number <= 6; ++number) list.Add(number, 0); // 0: the list is not locked
    CIterator walk;
    for (void *entry = walk.Iterate(&list); walk.More(); entry = walk.Next()) {
        if (reinterpret_cast<long>(entry) % 2 != 0) walk.Delete_Current();
    }
    std::printf("%ld entries are left, the first is %ld\n", list.Entries(0),
                reinterpret_cast<long>(list.Pop(0)));

    CHashTable table;
    if (table.Initialize(16) != 0) return 1;
    table.Add_Volatile("GREETING", "Good morning", 13); // the table's own copy
    char *found = nullptr;
    if (table.Find("GREETING", &found, nullptr) != 0) return 1;
    std::printf("%s\n", found);
    std::printf("an unknown key answers %ld\n", table.Find("FAREWELL", &found, nullptr));

    CSmartBuffer page;
    if (page.Initialize(64) != 0) return 1;
    page.Write("<p>%name%</p>");
    page.Move_To(0L);
    page.Search_And_Replace("%name%", "Kelmara", true);
    std::printf("%.*s\n", static_cast<int>(page.Get_End_Of_Data()), static_cast<char *>(page));
    return 0;
}
