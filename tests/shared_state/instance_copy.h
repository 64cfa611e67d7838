#pragma once
// A copy of a program that has a window and does what it is told with the instance registry, and the table
// that all copies share, mapped as any process may map it.

#include <kelmara/shared_state/instances.h>

#include <platform/kernel.h>
#include <platform/user.h>

#include <tests/support/second_process.h>
#include <tests/support/test_machine.h>

#include <cstring>

class InstanceCopy {
  public:
    explicit InstanceCopy(const std::string &title = "Title") : process_("instance_copy", {title}) {
        window = reinterpret_cast<HWND>(std::stoul(process_.Hear()));
        popup = reinterpret_cast<HWND>(std::stoul(process_.Hear()));
    }
    std::string Do(const std::string &command) {
        process_.Tell(command);
        return process_.Hear();
    }
    /// The answer as 0 or 1.
    int First(const std::string &key = "K", const std::string &subkey = "S") {
        return std::stoi(Do("first " + key + " " + subkey));
    }
    int Available(const std::string &key = "K", const std::string &subkey = "") {
        return std::stoi(Do("available " + key + " " + subkey));
    }
    void Begin(const std::string &command) { process_.Tell(command); }
    std::string Hear() { return process_.Hear(); }
    void Kill() {
        process_.Kill();
        process_.Wait();
    }

    HWND window, popup;

  private:
    SecondProcess process_;
};

class RawInstances {
  public:
    RawInstances()
        : mapping_(
              CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 0x96CC, "INSTANCESHARE")),
          table(static_cast<InstanceTable *>(MapViewOfFile(mapping_, FILE_MAP_ALL_ACCESS, 0, 0, 0))) {}
    ~RawInstances() {
        UnmapViewOfFile(table);
        CloseHandle(mapping_);
    }
    RawInstances(const RawInstances &) = delete;
    RawInstances &operator=(const RawInstances &) = delete;

    void Add(const std::string &key, const std::string &title, HWND window) const {
        InstanceRecord &record = table->Records[table->Count++] = {};
        std::strcpy(record.Key, key.c_str());
        std::strcpy(record.Subkey, "S");
        std::strcpy(record.Title, title.c_str());
        record.Window = window;
    }
    /// Keys and titles of the records in use: "K/S=Title K2/S=Other".
    std::string Text() const {
        std::string text;
        for (long i = 0; i < table->Count; ++i) {
            const InstanceRecord &record = table->Records[i];
            text += std::string(i ? " " : "") + record.Key + "/" + record.Subkey + "=" + record.Title;
        }
        return text;
    }

  private:
    const HANDLE mapping_;

  public:
    InstanceTable *const table;
};
