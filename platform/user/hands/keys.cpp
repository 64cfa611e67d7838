#include <platform/user/hands/keys.h>

#include <bitset>

namespace {

constinit thread_local std::bitset<256> keys_down;

} // namespace

bool Is_Key_Down(UINT key) {
    return key < keys_down.size() && keys_down[key];
}

void Set_Key_Down(UINT key, bool down) {
    if (key < keys_down.size()) keys_down[key] = down;
}

LPARAM As_Packet(unsigned char character) {
    return static_cast<LPARAM>(character) << 16;
}

unsigned char Character_Of_Key(const MSG &message) {
    const UINT key = message.wParam;
    if (key == VK_PACKET) return static_cast<unsigned char>(message.lParam >> 16);
    if (Is_Key_Down(VK_CONTROL)) return 0;
    if (key >= '0' && key <= '9') return Is_Key_Down(VK_SHIFT) ? 0 : static_cast<unsigned char>(key);
    if (key >= 'A' && key <= 'Z') return static_cast<unsigned char>(Is_Key_Down(VK_SHIFT) ? key : key + 32);
    for (const UINT each : {VK_BACK, VK_TAB, VK_RETURN, VK_ESCAPE, VK_SPACE}) {
        if (key == each) return static_cast<unsigned char>(each);
    }
    return 0;
}
