#include <kelmara/system/key_copy.h>

#include <kelmara/foundation/memory.h>

namespace {

constexpr unsigned Deepest_Level = 512;
constexpr DWORD Data_Buffer_Size = 1000;
constexpr int Most_Attempts = 8; // at a value that grows each time before it is read

// Bytes of a stated size, and as many more as it is told to have.
template <DWORD Inline_Size>
class ValueBuffer {
  public:
    ValueBuffer() = default;
    ~ValueBuffer() { Release(); }
    ValueBuffer(const ValueBuffer &) = delete;
    ValueBuffer &operator=(const ValueBuffer &) = delete;
    char *Bytes() { return m_Block ? m_Block : m_Inline; }
    DWORD Size() const { return m_Size; }

    bool Grow_To(DWORD size) {
        if (size <= m_Size) return true;
        char *const block = static_cast<char *>(ds_malloc(static_cast<long>(size)));
        if (!block) return false;
        Release();
        m_Block = block;
        m_Size = size;
        return true;
    }

  private:
    void Release() {
        if (m_Block) ds_free(m_Block);
    }

    char m_Inline[Inline_Size];
    char *m_Block = nullptr;
    DWORD m_Size = Inline_Size;
};

struct ValueBuffers {
    ValueBuffer<Name_Buffer_Size> name;
    ValueBuffer<Data_Buffer_Size> data;
};

// A value that does not fit is read again with room for it. ERROR_NOT_ENOUGH_MEMORY: there is none.
LONG Read_Value(HKEY source, DWORD index, ValueBuffers &value, DWORD *type, DWORD *size) {
    for (int attempt = 0; attempt < Most_Attempts; ++attempt) {
        DWORD name_size = value.name.Size();
        *size = value.data.Size();
        const LONG result = RegEnumValueA(source, index, value.name.Bytes(), &name_size, nullptr, type,
                                          reinterpret_cast<BYTE *>(value.data.Bytes()), size);
        if (result != ERROR_MORE_DATA) return result;
        if (!value.name.Grow_To(name_size) || !value.data.Grow_To(*size)) break;
    }
    return ERROR_NOT_ENOUGH_MEMORY;
}

// Not inlined: the buffers must not stand in every frame of a copy that goes deep.
[[gnu::noinline]] KeyCopyResult Copy_Values(HKEY source, HKEY target) {
    DWORD count = 0;
    if (RegQueryInfoKeyA(source, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr,
                         nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return KeyCopyResult::Failed;
    }
    ValueBuffers value;
    bool whole = true;
    for (DWORD index = 0; index < count; ++index) {
        DWORD type = 0, size = 0;
        LONG result = Read_Value(source, index, value, &type, &size);
        if (result == ERROR_SUCCESS) {
            result = RegSetValueExA(target, value.name.Bytes(), 0, type,
                                    reinterpret_cast<const BYTE *>(value.data.Bytes()), size);
        }
        if (result != ERROR_SUCCESS) whole = false;
    }
    return whole ? KeyCopyResult::Whole : KeyCopyResult::Partly;
}

// The names of all keys below one, as they were when they were collected: two bytes of level, counted from 1,
// and the name, for each key before its subkeys.
class SubkeyNames {
  public:
    SubkeyNames() = default;
    ~SubkeyNames() {
        if (m_Block) ds_free(m_Block);
    }
    SubkeyNames(const SubkeyNames &) = delete;
    SubkeyNames &operator=(const SubkeyNames &) = delete;

    bool Collect(HKEY key, unsigned level = 1) {
        DWORD count = 0;
        if (RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            return false;
        }
        for (DWORD index = 0; index < count; ++index) {
            OpenedKey subkey;
            if (level > Deepest_Level || !Collect_One(key, index, level, subkey)) return false;
            if (!Collect(subkey, level + 1)) return false;
        }
        return true;
    }

    /// Gives the next name when it is of that level, null when it is of another or there is none.
    const char *Next(unsigned level) {
        if (m_Read == m_Used) return nullptr;
        const auto *const entry = reinterpret_cast<unsigned char *>(m_Block + m_Read);
        if ((entry[0] | entry[1] << 8) != static_cast<int>(level)) return nullptr;
        m_Read += Level_Size;
        const char *const name = m_Block + m_Read;
        while (m_Block[m_Read++]) {
        }
        return name;
    }

  private:
    static constexpr long Level_Size = 2;
    static constexpr long Entry_Room = Level_Size + static_cast<long>(Name_Buffer_Size);
    static constexpr long First_Size = 1024, Largest_Size = 1L << 29;

    bool Collect_One(HKEY key, DWORD index, unsigned level, OpenedKey &subkey) {
        if (!Make_Room()) return false;
        char *const name = m_Block + m_Used + Level_Size;
        DWORD length = Name_Buffer_Size;
        if (RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            return false;
        }
        m_Block[m_Used] = static_cast<char>(level & 0xFF);
        m_Block[m_Used + 1] = static_cast<char>(level >> 8);
        m_Used += Level_Size + static_cast<long>(length) + 1;
        return Open_Existing_Key(key, name, subkey.Place()) == ERROR_SUCCESS;
    }

    bool Make_Room() {
        if (m_Size - m_Used >= Entry_Room) return true;
        if (m_Size >= Largest_Size) return false;
        const long size = m_Block ? m_Size * 2 : First_Size;
        void *const block = m_Block ? ds_realloc(m_Block, size) : ds_malloc(size);
        if (!block) return false;
        m_Block = static_cast<char *>(block);
        m_Size = size;
        return true;
    }

    char *m_Block = nullptr;
    long m_Size = 0, m_Used = 0, m_Read = 0;
};

KeyCopyResult Worse(KeyCopyResult left, KeyCopyResult right) {
    return left < right ? left : right;
}

KeyCopyResult Copy_Subkeys(HKEY source, HKEY target, SubkeyNames &names, unsigned level) {
    KeyCopyResult result = KeyCopyResult::Whole;
    while (const char *const name = names.Next(level)) {
        OpenedKey from, to;
        if (Open_Existing_Key(source, name, from.Place()) != ERROR_SUCCESS) return KeyCopyResult::Failed;
        if (Open_Or_Make_Key(target, name, to.Place()) != ERROR_SUCCESS) return KeyCopyResult::Failed;
        result = Worse(result, Copy_Values(from, to));
        if (result == KeyCopyResult::Failed) return result;
        result = Worse(result, Copy_Subkeys(from, to, names, level + 1));
        if (result == KeyCopyResult::Failed) return result;
    }
    return result;
}

} // namespace

KeyCopyResult Copy_Below_Key(HKEY source, HKEY target) {
    const KeyCopyResult values = Copy_Values(source, target);
    SubkeyNames names;
    if (values == KeyCopyResult::Failed || !names.Collect(source)) return KeyCopyResult::Failed;
    return Worse(values, Copy_Subkeys(source, target, names, 1));
}
