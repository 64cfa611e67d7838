#include <tools/tables/shared_images.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>

#include <cstring>

namespace tools {

namespace {

bool Is_Slot(long slot) {
    return slot >= 0 && slot < Atom_Capacity;
}

class AtomReader {
  public:
    explicit AtomReader(const std::string &block) : block_(block) {
        std::memcpy(&header_, block.data(), sizeof header_);
    }

    AtomImage Read() {
        Walk_Chain();
        Look_For_Strays();
        Look_At_Free_Slots();
        return std::move(image_);
    }

  private:
    AtomRecord Record(long slot) const {
        AtomRecord record;
        std::memcpy(&record, block_.data() + sizeof header_ + static_cast<std::size_t>(slot) * sizeof record,
                    sizeof record);
        return record;
    }
    void Fault(const std::string &text) { image_.faults.push_back(text); }

    void Walk_Chain() {
        long before = -1, slot = header_.Head;
        for (; Is_Slot(slot) && !in_chain_[slot]; slot = Record(slot).Next) {
            const AtomRecord record = Record(slot);
            in_chain_[slot] = true;
            if (record.Prev != before) Fault("atom in slot " + std::to_string(slot) + " does not lead back");
            if (!record.InUse) Fault("the chain leads to slot " + std::to_string(slot) + ", which is free");
            if (record.InUse) Take(slot, record);
            before = slot;
        }
        if (slot != -1) Fault("the chain of atoms leads to slot " + std::to_string(slot));
        if (before != header_.Tail) Fault("the chain of atoms does not end at the newest");
        if (header_.Count != static_cast<long>(image_.atoms.size()))
            Fault("the count is " + std::to_string(header_.Count) + ", the chain has " +
                  std::to_string(image_.atoms.size()) + " atoms");
    }

    void Take(long slot, const AtomRecord &record) {
        std::string data(record.Data, sizeof record.Data);
        data.erase(data.find_last_not_of('\0') + 1);
        image_.atoms.push_back({slot, record.Group, record.Id, std::move(data)});
    }

    void Look_For_Strays() {
        for (long slot = 0; slot < Atom_Capacity; ++slot) {
            if (!in_chain_[slot] && Record(slot).InUse)
                Fault("atom in slot " + std::to_string(slot) + " is not in the chain");
        }
    }

    void Look_At_Free_Slots() {
        bool is_free[Atom_Capacity] = {};
        for (long i = 0; i < Atom_Capacity - header_.Count && i < Atom_Capacity; ++i) {
            const long slot = header_.FreeSlots[i];
            if (!Is_Slot(slot) || is_free[slot] || in_chain_[slot])
                return Fault("the list of free slots is damaged at entry " + std::to_string(i));
            is_free[slot] = true;
        }
    }

    const std::string &block_;
    AtomTableHeader header_;
    bool in_chain_[Atom_Capacity] = {};
    AtomImage image_;
};

template <std::size_t Size>
std::string Text_In(const char (&text)[Size]) {
    return std::string(text, strnlen(text, Size));
}

} // namespace

bool Is_In_Change(const std::string &block) {
    long mark = 0;
    if (block.size() == Atom_Block_Size)
        std::memcpy(&mark, block.data() + sizeof(AtomTableHeader) + offsetof(AtomRecord, Reserved),
                    sizeof mark);
    return mark != 0;
}

AtomImage Read_Atoms(const std::string &block) {
    if (block.size() != Atom_Block_Size)
        return {{}, {"the table has " + std::to_string(block.size()) + " bytes"}};
    return AtomReader(block).Read();
}

InstanceImage Read_Instances(const std::string &block) {
    InstanceImage image;
    long count = 0;
    if (block.size() != sizeof(InstanceTable)) {
        image.faults.push_back("the table has " + std::to_string(block.size()) + " bytes");
        return image;
    }
    std::memcpy(&count, block.data(), sizeof count);
    if (count < 0 || count > Instance_Capacity) {
        image.faults.push_back("the count is " + std::to_string(count));
        count = count < 0 ? 0 : Instance_Capacity;
    }
    for (long i = 0; i < count; ++i) {
        InstanceRecord record;
        std::memcpy(&record,
                    block.data() + offsetof(InstanceTable, Records) +
                        static_cast<std::size_t>(i) * sizeof record,
                    sizeof record);
        image.instances.push_back({Text_In(record.Key), Text_In(record.Subkey), Text_In(record.Title),
                                   reinterpret_cast<unsigned long>(record.Window)});
    }
    return image;
}

std::string Code_Text(long number) {
    std::string code;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>(static_cast<unsigned long>(number) >> shift & 0xFF);
        if (c < '!' || c > '~') return std::to_string(number);
        code += c;
    }
    return "'" + code + "'";
}

} // namespace tools
