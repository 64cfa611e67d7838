#pragma once
// What one of our modules calls in another, replaced for the length of a scope.
//
//     ReplacedImport sleep("libkelmara.so", "Sleep", reinterpret_cast<void *>(Count_Sleep));
//
// Only calls of that module are caught; everybody else's go where they always went.

#include <string>
#include <utility>
#include <vector>

class ReplacedImport {
  public:
    /// A module that is not loaded, or does not import the name, fails the test.
    ReplacedImport(const std::string &module, const std::string &name, void *replacement);
    ~ReplacedImport();
    ReplacedImport(const ReplacedImport &) = delete;
    ReplacedImport &operator=(const ReplacedImport &) = delete;

  private:
    std::vector<std::pair<void **, void *>> replaced_; // the places, and what stood there
};
