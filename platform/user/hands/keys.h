#pragma once
// Which keys the machine's user holds down, by thread, and the character that a key makes.

#include <platform/user.h>

bool Is_Key_Down(UINT key);
void Set_Key_Down(UINT key, bool down);

/// 0 for keys that make none. A VK_PACKET carries its character where other keys have their place.
unsigned char Character_Of_Key(const MSG &message);
LPARAM As_Packet(unsigned char character);
