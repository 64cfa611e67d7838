#include <tools/failure.h>
#include <tools/interruption.h>
#include <tools/progress.h>
#include <tools/reg/change.h>
#include <tools/reg/open_key.h>

#include <platform/errors.h>

#include <cstdio>
#include <new>

namespace tools::reg {

namespace {

LONG Make_Key(const KeyPath &path, std::string class_name) {
    HKEY key = nullptr;
    const LONG code = RegCreateKeyExA(path.root->key, path.Below_Root().c_str(), 0, class_name.data(), 0,
                                      KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (key != nullptr) RegCloseKey(key);
    return code;
}

LONG Delete_Empty_Key(const KeyPath &path) {
    const OpenKey key(path);
    if (!key) return ERROR_SUCCESS;
    DWORD values = 0;
    const LONG code = RegQueryInfoKeyA(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                       &values, nullptr, nullptr, nullptr, nullptr);
    if (code != ERROR_SUCCESS) return code == ERROR_KEY_DELETED ? ERROR_SUCCESS : code;
    if (values > 0) return ERROR_ACCESS_DENIED;
    return RegDeleteKeyA(key.Get(), "");
}

// Keeps the key of the last change open: the next one is mostly of the same.
class Maker {
  public:
    LONG Make(const Change &change) { return Bring(change, change.now); }
    LONG Take_Back(const Change &change) { return Bring(change, change.before); }

  private:
    LONG Bring(const Change &change, const std::optional<Value> &to) {
        if (change.of_key) {
            last_ = OpenKey();
            return to ? Make_Key(change.key, to->data) : Delete_Empty_Key(change.key);
        }
        if (!last_ || last_.Path() != change.key.Text()) last_ = OpenKey(change.key);
        if (!last_) return ERROR_FILE_NOT_FOUND;
        if (to) return Set(change.name, *to);
        const LONG code = RegDeleteValueA(last_.Get(), change.name.c_str());
        return code == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : code;
    }
    LONG Set(const std::string &name, const Value &value) {
        return RegSetValueExA(last_.Get(), name.c_str(), 0, value.type,
                              reinterpret_cast<const BYTE *>(value.data.data()),
                              static_cast<DWORD>(value.data.size()));
    }

    OpenKey last_;
};

// What could not be taken back.
std::size_t Take_Back(const std::vector<Change> &changes, std::size_t made) {
    Maker maker;
    std::size_t left = 0;
    while (made-- > 0) {
        try {
            if (maker.Take_Back(changes[made]) != ERROR_SUCCESS) ++left;
        } catch (const Failure &) {
            ++left;
        } catch (const std::bad_alloc &) {
            ++left;
        }
    }
    return left;
}

std::string After_Taking_Back(const std::vector<Change> &changes, std::size_t made) {
    const std::size_t left = Take_Back(changes, made);
    if (left == 0) return "nothing was changed";
    return std::to_string(left) + " of " + std::to_string(changes.size()) +
           " changes were made and could not be taken back; doing the same again makes the rest";
}

void Make_Each(const std::vector<Change> &changes, std::size_t &made) {
    Maker maker;
    Progress progress("changing the registry", changes.size());
    for (const Change &change : changes) {
        const LONG code = maker.Make(change);
        if (code != ERROR_SUCCESS) Fail_On_Key(change.key.Text(), code);
        ++made;
        progress.Step();
    }
}

} // namespace

void Make_Changes(const std::vector<Change> &changes) {
    std::size_t made = 0;
    try {
        End_If_Interrupted();
        Make_Each(changes, made);
    } catch (const Failure &failure) {
        throw Failure(failure.Code(), failure.what() + ("; " + After_Taking_Back(changes, made)));
    } catch (const std::bad_alloc &) {
        throw Failure(Exit_Unusable, "not enough memory; " + After_Taking_Back(changes, made));
    } catch (const Interrupted &) {
        std::fprintf(stderr, "kelmara: interrupted; %s\n", After_Taking_Back(changes, made).c_str());
        throw;
    }
    const LONG code = changes.empty() ? ERROR_SUCCESS : RegFlushKey(HKEY_LOCAL_MACHINE);
    if (code != ERROR_SUCCESS) Fail_On_Key("all is changed, but maybe not on the disk", code);
}

} // namespace tools::reg
