#pragma once
// The suite server's object: which components there are, and the suite's settings. It keeps nothing itself:
// every answer comes from the registry and every setting goes there, on the disk before the call returns, so
// that settings outlive the server and any number of objects agree.

#include <kelmara/connectivity/component_interfaces.h>

#include <atomic>

/// Written as a setting, it is not stored: the server ends.
inline constexpr unsigned long Setting_End_Server = Component_Code("quit");
/// Held by the server that serves, as long as it lives.
inline constexpr char Server_Mutex[] = "KelmaraSuiteServer";
/// The server's environment may name a process by its id, which it does not outlive, however that ends. It
/// does not serve for one that has ended.
inline constexpr char Server_Owner_Variable[] = "KELMARA_SERVER_OWNER";

class SuiteServer final : public IServerInterface, public IServerSimpleAccessInterface {
  public:
    /// An object with one reference, for the caller to release.
    static SuiteServer *Make();

    HRESULT QueryInterface(REFIID iid, void **out) override;
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override;

    /// 0 with the locator filled, also when there is no such component; E_INVALIDARG, and a cleared locator,
    /// for what can be no component's kind or name.
    long Find_Component(long kind, char *name, ComponentLocator *out) override;

    /// `*size` out counts the terminator, as the sizes of Write_Setting and Update_Setting may; they take the
    /// text up to its terminator or that many bytes. A setting that there is not is ERROR_FILE_NOT_FOUND and
    /// an empty text of size 1; one that does not fit is ERROR_MORE_DATA, an empty text, and the size needed.
    /// What others have stored and is no text, or larger than 65,536 bytes, is ERROR_INVALID_DATA.
    long Read_Setting(unsigned long code, char *buffer, long *size) override;
    long Write_Setting(unsigned long code, char *text, long size) override;
    /// Only of a setting that is there, readable or not: ERROR_FILE_NOT_FOUND otherwise.
    long Update_Setting(unsigned long code, char *text, long size, long zero) override;

  private:
    SuiteServer() = default;
    ~SuiteServer() = default;

    std::atomic<ULONG> count_{1};
};
