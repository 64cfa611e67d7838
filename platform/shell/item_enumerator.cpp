#include <platform/shell/item_enumerator.h>

#include <platform/com/class_keys.h>

#include <algorithm>
#include <utility>

HRESULT ItemEnumerator::QueryInterface(REFIID iid, void **out) {
    if (!out) return E_POINTER;
    const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IEnumIDList);
    *out = known ? this : nullptr;
    return known ? AddRef(), S_OK : E_NOINTERFACE;
}

ULONG ItemEnumerator::Release() {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
}

HRESULT ItemEnumerator::Next(ULONG count, LPITEMIDLIST *out, ULONG *given) {
    if (given) *given = 0;
    if (!out || (!given && count != 1)) return E_POINTER;
    const ULONG most = std::min<ULONG>(count, Left());
    for (ULONG i = 0; i < most; ++i) {
        if ((out[i] = (*items_)[position_ + i].Give_List())) continue;
        while (i > 0) CoTaskMemFree(std::exchange(out[--i], nullptr));
        return E_OUTOFMEMORY;
    }
    if (most == 0 && count > 0) *out = nullptr;
    position_ += most;
    if (given) *given = most;
    return most == count ? S_OK : S_FALSE;
}

HRESULT ItemEnumerator::Skip(ULONG count) {
    const ULONG most = std::min<ULONG>(count, Left());
    position_ += most;
    return most == count ? S_OK : S_FALSE;
}

HRESULT ItemEnumerator::Clone(IEnumIDList **out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Result_Within_Memory([&] { return *out = new ItemEnumerator(items_, position_), S_OK; });
}
