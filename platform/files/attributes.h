#pragma once
// Attributes of files and folders, from what the host keeps of them.

#include <platform/files.h>

#include <sys/stat.h>

inline bool Is_Read_Only(mode_t mode) {
    return (mode & S_IWUSR) == 0;
}

inline DWORD Attributes_Of(mode_t mode) {
    const DWORD kind = S_ISDIR(mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    return kind | (Is_Read_Only(mode) ? FILE_ATTRIBUTE_READONLY : 0);
}
