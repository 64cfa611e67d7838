#pragma once
// The location component's and the connection component's classes as a test tells them to be: offered by
// tests/modules/fake_components.cpp, whose export Fakes gives the record.

#include <kelmara/connectivity/component_records.h>

#include <map>
#include <string>
#include <vector>

struct FakeComponents {
    std::map<std::string, long> answers;         // of calls by their names; 0 without. "Query ..." too
    std::map<unsigned long, std::string> values; // options of a location; what a tree holds
    std::vector<std::string> calls;              // with their arguments, and the ends of objects
    long living = 0;                             // objects
    unsigned long last_token = 0;
};
