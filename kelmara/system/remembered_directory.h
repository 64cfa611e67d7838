#pragma once
// Inside the library: the current directory, to come back to. It is the whole process's: nobody else may need
// it between the two.

#include <platform/runtime.h>
#include <platform/types.h>

class RememberedDirectory {
  public:
    // One whose name no path can have is not known: there would be no way back.
    RememberedDirectory() : m_Known(Machine_Get_Directory(m_Path, sizeof m_Path) && Go_Back()) {}
    bool Is_Known() const { return m_Known; }
    bool Go_Back() const { return Machine_Change_Directory(m_Path) == 0; }
    const char *Path() const { return m_Path; }

  private:
    char m_Path[MAX_PATH] = {};
    bool m_Known;
};
