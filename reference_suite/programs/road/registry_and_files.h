#pragma once
// The second stretch: the suite's folders, its registry keys between processes, and files that are saved
// whole or not at all.

#include <string>

void Find_Folders();
void Share_Settings();
void Save_Files();

/// The neighbours of Share_Settings and Save_Files; exit codes.
int Change_A_Setting();
int Save_And_Stay();

/// A folder of the suite by its identifier, and the bytes of a file, "(no file)" where there is none.
std::string Folder(int identifier);
std::string Content_Of(const std::string &path);
