#pragma once
// The object that the tests of servers serve: it does what a word says.

#include <tests/modules/com_service.h>

#include <platform/kernel.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <string>
#include <unistd.h>

inline std::atomic<long> living{0};            // objects of the service in this process
inline ITestService *busy_elsewhere = nullptr; // what this process waits for

class Service final : public ITestService, public ITestNumber {
  public:
    Service() { ++living; }
    HRESULT QueryInterface(REFIID iid, void **out) override {
        *out = nullptr;
        if (IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_ITestService))
            *out = static_cast<ITestService *>(this);
        else if (IsEqualGUID(iid, IID_ITestNumber))
            *out = static_cast<ITestNumber *>(this);
        else if (IsEqualGUID(iid, IID_IMalloc)) // has no proxy module
            *out = static_cast<ITestService *>(this);
        if (*out) AddRef();
        return *out ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++count_; }
    ULONG Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }
    long Do(char *asked, char *answer, long size) override {
        const std::string word = asked;
        answer[0] = 0;
        if (word == "living") std::snprintf(answer, static_cast<std::size_t>(size), "%ld", living.load());
        if (word == "thread") std::snprintf(answer, static_cast<std::size_t>(size), "%d", gettid());
        if (word == "die") raise(SIGKILL);
        if (word == "throw") throw 1;
        if (word == "much") std::fill_n(answer, 900000, 'm'), answer[900000] = 0;
        if (word == "sleep") Sleep(1000);
        if (word == "fork") std::snprintf(answer, static_cast<std::size_t>(size), "%d", Forked());
        if (word == "leave") ExitThread(0);
        if (word == "back") return Call_Back();
        if (word == "again") return busy_elsewhere->Do(asked, answer, size);
        return static_cast<long>(word.size());
    }
    long Number() override { return 17; }

  private:
    ~Service() { --living; }
    // A child that lets go of COM and stays.
    static pid_t Forked() {
        const pid_t child = fork();
        if (child == 0) CoUninitialize(), pause();
        Sleep(50);
        return child;
    }
    // To who serves under the other class.
    static long Call_Back() {
        void *made = nullptr;
        const HRESULT result =
            CoCreateInstance(CLSID_TestProxy, nullptr, CLSCTX_LOCAL_SERVER, IID_ITestNumber, &made);
        if (result < 0) return result;
        auto *const number = static_cast<ITestNumber *>(made);
        const long answer = number->Number();
        number->Release();
        return answer;
    }
    ULONG count_ = 1;
};

// Lasts as long as the process.
class ServiceFactory final : public IClassFactory {
  public:
    HRESULT QueryInterface(REFIID iid, void **out) override {
        const bool known = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IClassFactory);
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG AddRef() override { return ++count; }
    ULONG Release() override { return --count; }
    HRESULT CreateInstance(IUnknown *, REFIID iid, void **out) override {
        auto *const made = new Service;
        const HRESULT result = made->QueryInterface(iid, out);
        made->Release();
        return result;
    }
    HRESULT LockServer(BOOL) override { return E_NOTIMPL; }

    ULONG count = 1;
};
inline ServiceFactory factory;
