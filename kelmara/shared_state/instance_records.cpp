#include <kelmara/shared_state/instance_records.h>

#include <atomic>
#include <cstring>

namespace {

// Keeps the compiler from moving stores over the border of a step.
void End_Step() {
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

void Copy_Cut(InstanceText &to, const char *from) {
    std::strncpy(to, from ? from : "", sizeof to - 1);
    to[sizeof to - 1] = 0;
}

// A text of the block may lack its end; `wanted` has one.
bool Is_Same(const InstanceText &stored, const InstanceText &wanted) {
    return std::memcmp(stored, wanted, std::strlen(wanted) + 1) == 0;
}

void Write_Record(InstanceRecord &record, const InstanceText &key, const InstanceText &subkey,
                  const InstanceText &title, HWND window) {
    record.Window = nullptr;
    End_Step();
    std::memcpy(record.Key, key, sizeof record.Key);
    std::memcpy(record.Subkey, subkey, sizeof record.Subkey);
    std::memcpy(record.Title, title, sizeof record.Title);
    End_Step();
    record.Window = window;
    End_Step();
}

} // namespace

InstanceKeys::InstanceKeys(const char *key, const char *subkey) {
    Copy_Cut(Key, key);
    Copy_Cut(Subkey, subkey);
}

long Count_Of(const InstanceTable &table) {
    const long count = *const_cast<const volatile long *>(&table.Count); // read once
    if (count < 0) return 0;
    return count < Instance_Capacity ? count : Instance_Capacity;
}

void Put_In_Order(InstanceTable &table) {
    for (long index = 0; index < Count_Of(table);) {
        if (table.Records[index].Window)
            ++index;
        else
            Remove_Record(table, index);
    }
}

bool Has_Key(const InstanceRecord &record, const InstanceKeys &keys) {
    return Is_Same(record.Key, keys.Key);
}

bool Has_Keys(const InstanceRecord &record, const InstanceKeys &keys) {
    return Has_Key(record, keys) && Is_Same(record.Subkey, keys.Subkey);
}

bool Has_Title(const InstanceRecord &record, const InstanceText &title) {
    return Is_Same(record.Title, title);
}

void Remove_Record(InstanceTable &table, long index) {
    const long count = Count_Of(table);
    if (index >= count) return;
    for (; index + 1 < count; ++index) {
        const InstanceRecord &next = table.Records[index + 1];
        Write_Record(table.Records[index], next.Key, next.Subkey, next.Title, next.Window);
    }
    table.Count = count - 1;
}

bool Add_Record(InstanceTable &table, const InstanceKeys &keys, const InstanceText &title, HWND window) {
    const long count = Count_Of(table);
    if (count == Instance_Capacity) return false;
    Write_Record(table.Records[count], keys.Key, keys.Subkey, title, window);
    table.Count = count + 1;
    return true;
}

void Set_Title(InstanceRecord &record, const InstanceText &title) {
    std::memcpy(record.Title, title, sizeof record.Title);
}
