#pragma once
// The registry in memory: the tree of keys and values that the records of a file make, one after another.
//
// The tree is a function of the records alone, so that every process comes to the same one. Keys are known by
// numbers that are never given out twice. The keys behind the predefined roots, and what leads to them, are
// there from the start under fixed numbers and cannot be deleted. A record that makes no sense, as it may
// behind a damaged one, takes the least away: a key that is written to although its making was lost appears
// below HKEY_LOCAL_MACHINE\Rescued Keys under its number.
// Not for several threads at once, reading included: reading keeps the places of enumerations.

#include <platform/registry/enumeration.h>
#include <platform/registry/names.h>
#include <platform/registry/record.h>

#include <list>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

enum FixedKey : std::uint32_t {
    No_Key = 0,
    Local_Machine_Key = 1,
    Users_Key = 2,
    Software_Key = 3,
    Classes_Key = 4,
    Current_User_Key = 5,
    System_Key = 6,
    Control_Set_Key = 7,
    Profiles_Key = 8,
    Current_Config_Key = 9,
    Rescued_Keys_Key = 10, // there when something was rescued
    First_Free_Key = 16,
    Last_Key = UINT32_MAX - 1,
};

struct RegistryValue {
    std::string name;
    std::uint32_t type = 0;
    std::string data;
};

struct RegistryKey {
    using Values = std::list<RegistryValue>;

    struct ComesBefore {
        using is_transparent = void;
        static std::string_view Name(std::string_view name) { return name; }
        static std::string_view Name(const RegistryKey *key) { return key->name; }
        template <class Left, class Right>
        bool operator()(const Left &left, const Right &right) const {
            return Compare_Names(Name(left), Name(right)) < 0;
        }
    };
    struct ValueHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return Hash_Of_Name(name); }
        std::size_t operator()(Values::iterator value) const { return Hash_Of_Name(value->name); }
    };
    struct ValueIsNamed {
        using is_transparent = void;
        bool operator()(Values::iterator left, Values::iterator right) const { return left == right; }
        bool operator()(std::string_view name, Values::iterator value) const {
            return Compare_Names(name, value->name) == 0;
        }
        bool operator()(Values::iterator value, std::string_view name) const { return (*this)(name, value); }
    };
    using Subkeys = std::set<RegistryKey *, ComesBefore>;
    using ValueNames = std::unordered_set<Values::iterator, ValueHash, ValueIsNamed>;

    std::uint32_t number = No_Key;
    RegistryKey *parent = nullptr;
    std::string name;
    std::string class_name;
    std::uint64_t last_write = 0;
    Subkeys subkeys;    // in the order of their names
    Values values;      // in the order in which they were first set
    ValueNames by_name; // of the values

    Enumeration<Subkeys> subkey_place;
    Enumeration<Values> value_place;

    /// Null when there is none of that name.
    RegistryKey *Subkey(std::string_view subkey_name) const;
    const RegistryValue *Value(std::string_view value_name) const;
};

class KeyTree {
  public:
    /// A fresh registry, made at that time.
    explicit KeyTree(std::uint64_t made, std::uint32_t first_free_key = First_Free_Key);

    RegistryKey *Key(std::uint32_t number) const;
    /// Greater than that of any key that there ever was.
    std::uint32_t First_Free() const { return first_free_; }
    /// Keys of so many further numbers may have been made of which nothing is known.
    void Skip_Numbers(std::uint32_t count);
    std::uint64_t Made() const { return made_; }
    /// Bytes of the records that make the tree as it stands.
    std::uint32_t Live_Size() const { return live_size_; }

    struct Counts {
        std::uint32_t keys, values;
    };
    Counts Count() const;

    /// Makes the change that the record tells. When memory runs out the tree is fit for nothing but to go.
    void Apply(const RegistryRecord &record);

    /// Hands records to `take` that make this tree from a fresh one.
    template <class Take>
    void Carry(Take take) const;

  private:
    void Make_Fixed_Key(FixedKey number, std::uint32_t parent, std::string_view name);
    RegistryKey *Add_Key(std::uint32_t number, RegistryKey *parent, std::string_view name);
    RegistryKey *Key_Or_Rescued(std::uint32_t number);
    RegistryKey *Rescued_Keys(std::string_view name);
    static std::string Free_Name(const RegistryKey &parent, std::string_view wanted);
    void Carry_Fixed_Key(const RegistryRecord &record);
    void Make_Key(const RegistryRecord &record);
    void Delete_Key(const RegistryRecord &record);
    void Remove_With_Subkeys(RegistryKey *key);
    void Remove(RegistryKey *key);
    void Set_Value(const RegistryRecord &record);
    void Delete_Value(const RegistryRecord &record);
    std::vector<const RegistryKey *> Parents_First() const;

    std::unordered_map<std::uint32_t, std::unique_ptr<RegistryKey>> keys_;
    std::uint64_t made_;
    std::uint32_t first_free_;
    std::uint32_t live_size_ = 0;
};

template <class Take>
void KeyTree::Carry(Take take) const {
    for (const RegistryKey *key : Parents_First()) {
        if (key->number >= Rescued_Keys_Key || key->last_write != made_) {
            take(RegistryRecord{RecordKind::Carry_Key, key->number, key->parent ? key->parent->number : 0,
                                key->last_write, key->name, key->class_name});
        }
        for (const RegistryValue &value : key->values) {
            take(RegistryRecord{RecordKind::Set_Value, key->number, value.type, key->last_write, value.name,
                                value.data});
        }
    }
}
