#include <platform/user/hands/keys.h>
#include <platform/user/hands/queue_work.h>

#include <platform/machine.h>

namespace {

// The key of a character that stands on one without Shift; VK_PACKET for all others.
UINT Key_Of(unsigned char character) {
    if (character >= 'a' && character <= 'z') return static_cast<UINT>(character - 32);
    const bool is_key = (character >= '0' && character <= '9') || character == ' ' || character == '\r' ||
                        character == '\t' || character == '\b';
    return is_key ? character : VK_PACKET;
}

bool Key_Message(UINT message, UINT key, LPARAM packet) {
    const HWND focus = GetFocus();
    if (!focus || Hands_Are_Busy()) return false;
    Set_Key_Down(key, message == WM_KEYDOWN);
    return Post_And_Work(focus, message, key, packet);
}

} // namespace

extern "C" {

bool Hold_Key(UINT key) {
    return Key_Message(WM_KEYDOWN, key, 0);
}

bool Release_Key(UINT key) {
    Set_Key_Down(key, false); // also when nobody hears of it
    return Key_Message(WM_KEYUP, key, 0);
}

bool Press_Key(UINT key) {
    if (!Hold_Key(key)) return false;
    Release_Key(key);
    return true;
}

bool Type_Text(const char *text) {
    if (!text) return false;
    for (; *text; ++text) {
        const auto character = static_cast<unsigned char>(*text == '\n' ? '\r' : *text);
        const UINT key = Key_Of(character);
        const LPARAM packet = key == VK_PACKET ? As_Packet(character) : 0;
        if (!Key_Message(WM_KEYDOWN, key, packet)) return false;
        Key_Message(WM_KEYUP, key, packet);
    }
    return true;
}
}
