#pragma once
// The memory of messages, the same on both sides.

#include <platform/com_marshalling.h>

inline HRESULT Give_Buffer(RPCOLEMESSAGE *message) {
    if (!message || message->cbBuffer > Largest_Message) return E_INVALIDARG;
    message->Buffer = CoTaskMemAlloc(message->cbBuffer);
    if (!message->Buffer) return E_OUTOFMEMORY;
    std::memset(message->Buffer, 0, message->cbBuffer);
    return S_OK;
}

inline HRESULT Take_Buffer_Back(RPCOLEMESSAGE *message) {
    if (!message) return E_INVALIDARG;
    CoTaskMemFree(message->Buffer);
    message->Buffer = nullptr;
    message->cbBuffer = 0;
    return S_OK;
}
