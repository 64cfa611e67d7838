#include <platform/registry/key_tree.h>

#include <algorithm>

namespace {
constexpr std::size_t Kept_Room = 4096; // bytes that a value may keep although its data has become small
}

RegistryKey *RegistryKey::Subkey(std::string_view subkey_name) const {
    const auto found = subkeys.find(subkey_name);
    return found == subkeys.end() ? nullptr : *found;
}

const RegistryValue *RegistryKey::Value(std::string_view value_name) const {
    const auto found = by_name.find(value_name);
    return found == by_name.end() ? nullptr : &**found;
}

KeyTree::KeyTree(std::uint64_t made, std::uint32_t first_free_key)
    : made_(made), first_free_(std::max<std::uint32_t>(first_free_key, First_Free_Key)) {
    Make_Fixed_Key(Local_Machine_Key, No_Key, {});
    Make_Fixed_Key(Users_Key, No_Key, {});
    Make_Fixed_Key(Software_Key, Local_Machine_Key, "Software");
    Make_Fixed_Key(Classes_Key, Software_Key, "Classes");
    Make_Fixed_Key(Current_User_Key, Users_Key, "S-1-5-21-0-0-0-1000");
    Make_Fixed_Key(System_Key, Local_Machine_Key, "System");
    Make_Fixed_Key(Control_Set_Key, System_Key, "CurrentControlSet");
    Make_Fixed_Key(Profiles_Key, Control_Set_Key, "Hardware Profiles");
    Make_Fixed_Key(Current_Config_Key, Profiles_Key, "Current");
}

void KeyTree::Make_Fixed_Key(FixedKey number, std::uint32_t parent, std::string_view name) {
    Add_Key(number, Key(parent), name)->last_write = made_;
}

RegistryKey *KeyTree::Key(std::uint32_t number) const {
    const auto found = keys_.find(number);
    return found == keys_.end() ? nullptr : found->second.get();
}

RegistryKey *KeyTree::Add_Key(std::uint32_t number, RegistryKey *parent, std::string_view name) {
    auto fresh = std::make_unique<RegistryKey>();
    RegistryKey *key = fresh.get();
    key->number = number;
    key->parent = parent;
    key->name = name;
    keys_.emplace(number, std::move(fresh));
    if (parent) {
        parent->subkeys.insert(key);
        parent->subkey_place.Forget();
    }
    first_free_ = std::max(first_free_, number + 1);
    return key;
}

// The key of that number. When its making was lost it is put where it can be found.
RegistryKey *KeyTree::Key_Or_Rescued(std::uint32_t number) {
    if (RegistryKey *key = Key(number)) return key;
    if (number < First_Free_Key || number > Last_Key) return nullptr;
    RegistryKey *place = Rescued_Keys("Rescued Keys");
    RegistryKey *key = Add_Key(number, place, Free_Name(*place, "Key " + std::to_string(number)));
    live_size_ += Record_Size(key->name.size(), 0);
    return key;
}

RegistryKey *KeyTree::Rescued_Keys(std::string_view name) {
    if (RegistryKey *place = Key(Rescued_Keys_Key)) return place;
    Make_Fixed_Key(Rescued_Keys_Key, Local_Machine_Key, Free_Name(*Key(Local_Machine_Key), name));
    return Key(Rescued_Keys_Key);
}

std::string KeyTree::Free_Name(const RegistryKey &parent, std::string_view wanted) {
    std::string name(wanted);
    while (parent.Subkey(name)) name += '+';
    return name;
}

void KeyTree::Skip_Numbers(std::uint32_t count) {
    first_free_ += std::min<std::uint32_t>(count, Last_Key + 1 - first_free_);
}

void KeyTree::Apply(const RegistryRecord &record) {
    switch (record.kind) {
    case RecordKind::Make_Key:
    case RecordKind::Carry_Key:
        return Make_Key(record);
    case RecordKind::Delete_Key:
        return Delete_Key(record);
    case RecordKind::Set_Value:
        return Set_Value(record);
    case RecordKind::Delete_Value:
        return Delete_Value(record);
    }
}

void KeyTree::Carry_Fixed_Key(const RegistryRecord &record) {
    RegistryKey *key = record.key == Rescued_Keys_Key ? Rescued_Keys(record.name) : Key(record.key);
    if (key) key->last_write = record.time;
}

void KeyTree::Make_Key(const RegistryRecord &record) {
    if (record.key < First_Free_Key) return Carry_Fixed_Key(record);
    if (record.key > Last_Key || Key(record.key)) return;
    if (record.name.empty() || record.name.size() > Longest_Key_Name) return;
    RegistryKey *parent = record.detail < record.key ? Key_Or_Rescued(record.detail) : nullptr;
    if (!parent) return;
    // The name was free when the key was made: that the other one was deleted is what got lost.
    if (RegistryKey *other = parent->Subkey(record.name)) {
        if (other->number < First_Free_Key) return;
        Remove_With_Subkeys(other);
    }
    RegistryKey *key = Add_Key(record.key, parent, record.name);
    live_size_ += Record_Size(record.name.size(), record.data.size());
    key->class_name = record.data;
    key->last_write = record.time;
    if (record.kind == RecordKind::Make_Key) parent->last_write = record.time;
}

void KeyTree::Delete_Key(const RegistryRecord &record) {
    RegistryKey *key = Key(record.key);
    if (!key || record.key < First_Free_Key) return;
    key->parent->last_write = record.time;
    Remove_With_Subkeys(key);
}

// What is below it was deleted before it: if it is still there, the record of that was lost.
void KeyTree::Remove_With_Subkeys(RegistryKey *key) {
    for (RegistryKey *at = key;;) {
        if (!at->subkeys.empty()) {
            at = *at->subkeys.begin();
            continue;
        }
        RegistryKey *parent = at->parent;
        const bool last = at == key;
        Remove(at);
        if (last) return;
        at = parent;
    }
}

void KeyTree::Remove(RegistryKey *key) {
    for (const RegistryValue &value : key->values) {
        live_size_ -= Record_Size(value.name.size(), value.data.size());
    }
    live_size_ -= Record_Size(key->name.size(), key->class_name.size());
    const auto place = key->parent->subkeys.find(key);
    key->parent->subkey_place.Before_Erase(key->parent->subkeys, place);
    key->parent->subkeys.erase(place);
    keys_.erase(key->number);
}

void KeyTree::Set_Value(const RegistryRecord &record) {
    RegistryKey *key = Key_Or_Rescued(record.key);
    if (!key) return;
    const auto found = key->by_name.find(record.name);
    RegistryKey::Values::iterator value;
    if (found != key->by_name.end()) {
        value = *found;
        live_size_ -= Record_Size(value->name.size(), value->data.size());
    } else {
        value = key->values.insert(key->values.end(), RegistryValue{std::string(record.name), 0, {}});
        key->by_name.insert(value);
    }
    value->type = record.detail;
    if (value->data.capacity() > 2 * record.data.size() + Kept_Room) std::string().swap(value->data);
    value->data = record.data;
    live_size_ += Record_Size(value->name.size(), value->data.size());
    key->last_write = record.time;
}

void KeyTree::Delete_Value(const RegistryRecord &record) {
    RegistryKey *key = Key(record.key);
    if (!key) return;
    key->last_write = record.time;
    const auto found = key->by_name.find(record.name);
    if (found == key->by_name.end()) return;
    const RegistryKey::Values::iterator value = *found;
    live_size_ -= Record_Size(value->name.size(), value->data.size());
    key->by_name.erase(found);
    key->value_place.Before_Erase(key->values, value);
    key->values.erase(value);
}

std::vector<const RegistryKey *> KeyTree::Parents_First() const {
    std::vector<const RegistryKey *> sorted;
    sorted.reserve(keys_.size());
    for (const auto &[number, key] : keys_) sorted.push_back(key.get());
    // A key has a greater number than the one above it.
    std::sort(sorted.begin(), sorted.end(),
              [](const RegistryKey *left, const RegistryKey *right) { return left->number < right->number; });
    return sorted;
}
