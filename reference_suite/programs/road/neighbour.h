#pragma once
// A second process of this program, on the same machine.

#include <string>
#include <sys/types.h>

/// Starts this program again in a role (see Run_As_Neighbour) and reads what it says line by line.
class Neighbour {
  public:
    explicit Neighbour(const std::string &role);
    ~Neighbour();
    Neighbour(const Neighbour &) = delete;
    Neighbour &operator=(const Neighbour &) = delete;

    /// Its next line, empty when it has ended.
    std::string Hear();
    void Kill();
    /// Its exit code, or minus the signal that ended it.
    int Wait();
    pid_t Id() const { return id_; }

  private:
    pid_t id_ = -1;
    int output_ = -1;
    bool ended_ = false;
    int status_ = 0;
};

/// What a neighbour does, by its role; its exit code.
int Run_As_Neighbour(const std::string &role);
