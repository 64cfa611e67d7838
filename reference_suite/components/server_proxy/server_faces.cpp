#include <reference_suite/components/server_proxy/server_faces.h>

#include <reference_suite/components/server_proxy/server_slots.h>

#include <reference_suite/components/server/suite_server.h>

long ServerFace::Find_Component(long kind, char *name, ComponentLocator *out) {
    if (!out) return E_INVALIDARG;
    MessageWriter arguments;
    arguments.Put(kind);
    arguments.Put_Text(name); // which may be the record's own
    *out = {};
    long answer = 0;
    const HRESULT result = Call(Slot_Find_Component, arguments, [&](MessageReader &results) {
        answer = results.Get();
        ComponentLocator found;
        results.Get_Record(found);
        if (!results.Is_Whole()) return;
        found.name[sizeof found.name - 1] = 0;
        *out = found;
    });
    return result < 0 ? result : answer;
}

namespace {

// As the server itself judges: only the setting that ends it needs no text.
bool Is_Setting(unsigned long code, const char *text, long size) {
    return code == Setting_End_Server || (text && size >= 0);
}

// No more than the text has, whatever the size says.
void Put_Setting(MessageWriter &arguments, unsigned long code, const char *text, long size) {
    const std::size_t length = text && size > 0 ? strnlen(text, static_cast<std::size_t>(size)) : 0;
    arguments.Put(static_cast<long>(code));
    arguments.Put_Bytes(text, length);
}

} // namespace

long ServerSettingsFace::Read_Setting(unsigned long code, char *buffer, long *size) {
    if (!buffer || !size || *size < 1) return E_INVALIDARG;
    MessageWriter arguments;
    arguments.Put(static_cast<long>(code));
    arguments.Put(*size);
    const long room = *size;
    buffer[0] = 0;
    *size = 1;
    long answer = 0;
    const HRESULT result = Call(Slot_Read_Setting, arguments, [&](MessageReader &results) {
        answer = results.Get();
        const long needed = results.Get();
        const std::string_view text = results.Get_Text();
        const bool makes_sense =
            text.size() < static_cast<std::size_t>(room) && (answer != ERROR_MORE_DATA || needed > room);
        if (!makes_sense) answer = RPC_E_INVALID_DATA;
        if (!makes_sense || !results.Is_Whole()) return;
        std::memcpy(buffer, text.data(), text.size());
        buffer[text.size()] = 0;
        *size = answer == ERROR_MORE_DATA ? needed : static_cast<long>(text.size()) + 1;
    });
    return result < 0 ? result : answer;
}

long ServerSettingsFace::Write_Setting(unsigned long code, char *text, long size) {
    if (!Is_Setting(code, text, size)) return E_INVALIDARG;
    MessageWriter arguments;
    Put_Setting(arguments, code, text, size);
    long answer = 0;
    const HRESULT result =
        Call(Slot_Write_Setting, arguments, [&](MessageReader &results) { answer = results.Get(); });
    return result < 0 ? result : answer;
}

long ServerSettingsFace::Update_Setting(unsigned long code, char *text, long size, long zero) {
    if (!text || size < 0) return E_INVALIDARG;
    MessageWriter arguments;
    Put_Setting(arguments, code, text, size);
    arguments.Put(zero);
    long answer = 0;
    const HRESULT result =
        Call(Slot_Update_Setting, arguments, [&](MessageReader &results) { answer = results.Get(); });
    return result < 0 ? result : answer;
}
