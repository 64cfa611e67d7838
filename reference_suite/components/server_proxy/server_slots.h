#pragma once
// The slots of the suite server's interfaces, IUnknown's three counted, as both sides of a call name them.

#include <platform/types.h>

inline constexpr unsigned long Slot_Find_Component = 7;
inline constexpr unsigned long Slot_Read_Setting = 3;
inline constexpr unsigned long Slot_Write_Setting = 6;
inline constexpr unsigned long Slot_Update_Setting = 8;
