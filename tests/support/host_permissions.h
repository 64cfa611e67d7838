#pragma once
// The host's permissions hold for this thread while it lives, even when the tests run as root.

class HostPermissions {
  public:
    HostPermissions();
    ~HostPermissions();
    HostPermissions(const HostPermissions &) = delete;
    HostPermissions &operator=(const HostPermissions &) = delete;

  private:
    unsigned effective_[2] = {}; // the capabilities that are laid aside
};
