#pragma once
// Inside the library: the string of the whole process that CWorldBeat::Get_Temp_String answers with.

class CSafeStr;

/// An empty string, before anybody asks for it. Allocates nothing.
void Make_Shared_String();

CSafeStr &Shared_String();

/// The exit routine: gives back what the string has allocated. It stays there, empty, for whoever still asks.
void Release_Shared_String();
