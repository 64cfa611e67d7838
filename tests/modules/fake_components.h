#pragma once
// The suite's components as a test tells them to be: offered by tests/modules/fake_components.cpp, whose
// export Fakes gives the record.

#include <kelmara/connectivity/component_records.h>

#include <platform/types.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

struct FakeComponents {
    std::map<std::string, long> answers;         // of calls by their names; 0 without. "Query ..." too
    std::map<unsigned long, std::string> values; // options and settings; what a tree holds
    std::vector<std::string> calls;              // with their arguments, and the ends of objects
    long living = 0;                             // objects
    unsigned long last_token = 0;

    bool dialup = true;   // of every connection
    std::string active;   // the configuration that is connected
    std::string throwing; // the call that throws
    bool silent = false;  // Get_Value writes nothing
    std::function<HANDLE()> make_event;
    HANDLE connected = nullptr, disconnected = nullptr; // what was handed out last
    ComponentLocator found = {};                        // by the server
    long setting_size = 0;                              // what the server tells, if not 0
};
