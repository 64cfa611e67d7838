#pragma once
// The items of a folder, one after the other. Copies share them.

#include <platform/shell/item.h>

#include <memory>
#include <vector>

class ItemEnumerator final : public IEnumIDList {
  public:
    using Items = std::shared_ptr<const std::vector<ShellItem>>;
    explicit ItemEnumerator(Items items, std::size_t position = 0)
        : items_(std::move(items)), position_(position) {}

    HRESULT QueryInterface(REFIID iid, void **out) override;
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override;
    HRESULT Next(ULONG count, LPITEMIDLIST *out, ULONG *given) override;
    HRESULT Skip(ULONG count) override;
    HRESULT Reset() override { return position_ = 0, S_OK; }
    HRESULT Clone(IEnumIDList **out) override;

  private:
    ~ItemEnumerator() = default;
    std::size_t Left() const { return items_->size() - position_; }

    const Items items_;
    std::size_t position_;
    ULONG count_ = 1;
};
