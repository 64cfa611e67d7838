// The proxy module of the test server's interfaces.

#include <reference_suite/components/marshalling/proxies.h>
#include <reference_suite/components/marshalling/proxy_module.h>
#include <reference_suite/components/marshalling/stubs.h>
#include <tests/modules/com_service.h>

#include <cstdio>

namespace {

class ServiceFace final : public ProxyFace<ITestService> {
  public:
    long Do(char *word, char *answer, long size) override {
        MessageWriter arguments;
        arguments.Put_Text(word);
        long answered = 0;
        const HRESULT result = Call(3, arguments, [&](MessageReader &results) {
            answered = results.Get();
            std::snprintf(answer, static_cast<std::size_t>(size), "%s", results.Get_Text());
        });
        return result < 0 ? result : answered;
    }
};

class ServiceStub final : public Stub<ITestService> {
  public:
    ServiceStub() : Stub(IID_ITestService) {}

  private:
    HRESULT Dispatch(ITestService &object, ULONG slot, MessageReader &arguments,
                     MessageWriter &results) override {
        if (slot != 3) return RPC_E_INVALIDMETHOD;
        const std::string word = arguments.Get_Text();
        if (!arguments.Is_Whole()) return RPC_E_INVALID_DATA;
        std::string answer(1 << 20, '\0');
        results.Put(object.Do(const_cast<char *>(word.c_str()), answer.data(), 1 << 20));
        results.Put_Text(answer.c_str());
        return S_OK;
    }
};

class NumberFace final : public ProxyFace<ITestNumber> {
  public:
    long Number() override {
        long number = 0;
        const HRESULT result = Call(3, {}, [&](MessageReader &results) { number = results.Get(); });
        return result < 0 ? result : number;
    }
};

class NumberStub final : public Stub<ITestNumber> {
  public:
    NumberStub() : Stub(IID_ITestNumber) {}

  private:
    HRESULT Dispatch(ITestNumber &object, ULONG, MessageReader &, MessageWriter &results) override {
        results.Put(object.Number());
        return S_OK;
    }
};

constexpr MarshalledInterface Interfaces[] = {
    {IID_ITestService, Proxy<ServiceFace>::Make, Make_Stub<ServiceStub>},
    {IID_ITestNumber, Proxy<NumberFace>::Make, Make_Stub<NumberStub>},
};

constinit ProxyModule module(Interfaces);

} // namespace

extern "C" __attribute__((visibility("default"))) HRESULT DllGetClassObject(REFCLSID clsid, REFIID iid,
                                                                            void **out) {
    return IsEqualGUID(clsid, CLSID_TestProxy) ? module.QueryInterface(iid, out) : CLASS_E_CLASSNOTAVAILABLE;
}
