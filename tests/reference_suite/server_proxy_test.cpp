// The suite server's proxies between a client and answers that no server of ours gives.

#include <reference_suite/components/marshalling/counted.h>
#include <reference_suite/components/marshalling/messages.h>

#include <tests/support/built_modules.h>
#include <tests/support/test_machine.h>

#include <kelmara/connectivity/component_interfaces.h>
#include <platform/kernel.h>

#include <functional>

namespace {

// Both lie on the stack of the test: no more than the counts matter.
struct Outer final : Counted<IUnknown, IID_IUnknown> {};

struct AnswerGiver final : Counted<IRpcChannelBuffer, IID_IRpcChannelBuffer> {
    HRESULT GetBuffer(RPCOLEMESSAGE *message, REFIID) override {
        message->Buffer = CoTaskMemAlloc(message->cbBuffer);
        return S_OK;
    }
    HRESULT SendReceive(RPCOLEMESSAGE *message, ULONG *) override {
        FreeBuffer(message);
        if (failure) return failure;
        message->cbBuffer = static_cast<ULONG>(answer.size());
        GetBuffer(message, GUID{});
        std::memcpy(message->Buffer, answer.data(), answer.size());
        return S_OK;
    }
    HRESULT FreeBuffer(RPCOLEMESSAGE *message) override {
        CoTaskMemFree(message->Buffer);
        return S_OK;
    }
    HRESULT GetDestCtx(DWORD *, void **) override { return E_NOTIMPL; }
    HRESULT IsConnected() override { return S_OK; }

    std::string answer;
    HRESULT failure = S_OK;
};

std::string Message(std::initializer_list<long> numbers, const std::string &bytes, const char *rest = "") {
    MessageWriter writer;
    for (const long number : numbers) writer.Put(number);
    writer.Put_Bytes(bytes.data(), bytes.size());
    return writer.Bytes() + rest;
}

struct ServerProxy : MachineTest {
    template <class Interface>
    void With_Proxy(REFIID iid, const std::function<void(Interface &)> &use) {
        const HMODULE module = LoadLibraryA(("z:" + Suite_Module("kmserverproxy.so")).c_str());
        const auto get =
            reinterpret_cast<DllGetClassObjectCall *>(GetProcAddress(module, "DllGetClassObject"));
        const GUID clsid = {0x3E9D52A4, 0x10B7, 0x4C63, {0x8A, 0x4F, 0x62, 0xD1, 0x0B, 0x93, 0x7E, 0x01}};
        void *factory = nullptr, *face = nullptr;
        ASSERT_EQ(get(clsid, IID_IPSFactoryBuffer, &factory), S_OK);
        IRpcProxyBuffer *proxy = nullptr;
        ASSERT_EQ(static_cast<IPSFactoryBuffer *>(factory)->CreateProxy(&outer, iid, &proxy, &face), S_OK);
        ASSERT_EQ(proxy->Connect(&channel), S_OK);
        use(*static_cast<Interface *>(face));
        proxy->Release();
        FreeLibrary(module);
    }
    Outer outer;
    AnswerGiver channel;
};

TEST_F(ServerProxy, LeavesNothingOfABrokenAnswerWithTheCaller) {
    const std::string text("Home\0", 5), too_long(9, 'x');
    const struct {
        std::string answer;
        HRESULT failure;
        const char *told;
    } readings[] = {{Message({0, 5}, text), S_OK, "0 5 Home"},
                    {Message({234, 9}, std::string(1, '\0')), S_OK, "234 9 "},
                    {Message({0, 5}, text), HRESULT_CALL_FAILED, "-2147023170 1 "},
                    {Message({0, 5}, text, "x"), S_OK, "-2147418097 1 "},
                    {Message({0, 5}, "Home"), S_OK, "-2147418097 1 "},
                    {Message({0, 900}, text), S_OK, "0 5 Home"},
                    {Message({0, -1}, too_long + '\0'), S_OK, "-2147418097 1 "},
                    {Message({234, 8}, std::string(1, '\0')), S_OK, "-2147418097 1 "}};
    With_Proxy<IServerSimpleAccessInterface>(IID_IServerSimpleAccessInterface, [&](auto &settings) {
        for (const auto &[answer, failure, told] : readings) {
            channel.answer = answer;
            channel.failure = failure;
            char buffer[8] = "before";
            long size = sizeof buffer;
            const long result = settings.Read_Setting(1, buffer, &size);
            EXPECT_EQ(std::to_string(result) + " " + std::to_string(size) + " " + buffer, told);
        }
    });
    ComponentLocator full;
    std::memset(&full, 'n', sizeof full);
    const std::string record(reinterpret_cast<const char *>(&full), sizeof full);
    const struct {
        std::string answer;
        HRESULT failure;
        std::size_t name_length;
    } findings[] = {{Message({0}, record), S_OK, sizeof full.name - 1},
                    {Message({0}, record), HRESULT_SERVER_UNAVAILABLE, 0},
                    {Message({0}, record, "x"), S_OK, 0},
                    {Message({0}, "record"), S_OK, 0}};
    With_Proxy<IServerInterface>(IID_IServerInterface, [&](auto &server) {
        for (const auto &[answer, failure, name_length] : findings) {
            channel.answer = answer;
            channel.failure = failure;
            ComponentLocator found = full;
            char name[] = "Home";
            EXPECT_EQ(server.Find_Component(0, name, &found) == 0, name_length > 0);
            EXPECT_EQ(strnlen(found.name, sizeof found.name), name_length);
            EXPECT_EQ(found.present != 0, name_length > 0);
        }
    });
}

} // namespace
