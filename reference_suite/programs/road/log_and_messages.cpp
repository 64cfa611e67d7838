#include <reference_suite/programs/road/log_and_messages.h>

#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>
#include <reference_suite/programs/road/registry_and_files.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/machine.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr int Root_Folder = 8;
constexpr long Questions = 1, Answers = 2; // codes of messages
constexpr DWORD Longest_Wait = 10000;      // milliseconds

std::string In_Root(const char *name) {
    return Folder(Root_Folder) + name;
}

/// Hears one message with a code, whoever sends it.
class Listener {
  public:
    explicit Listener(long code) {
        Require(Add_Message_Client(code, Take, this, false, &client_) == 0,
                "a process can register for messages");
    }
    ~Listener() {
        Remove_Message_Client(client_);
        CloseHandle(heard_);
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    /// "process N: text"
    std::string Hear() {
        Require(WaitForSingleObject(heard_, Longest_Wait) == WAIT_OBJECT_0, "a message arrives");
        return message_;
    }

  private:
    static void Take(unsigned long sender, long, char *data, long size, long, void *context) {
        auto &listener = *static_cast<Listener *>(context);
        listener.message_ =
            "process " + std::to_string(sender) + ": " + std::string(data, static_cast<std::size_t>(size));
        SetEvent(listener.heard_);
    }

    const HANDLE heard_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::string message_;
    void *client_ = nullptr;
};

void Broadcast(long code, const std::string &text) {
    Broadcast_Message(code, text.c_str(), static_cast<long>(text.size()));
}

void Write_Entries(const char *who) {
    Std_Log_Entry("The %s process has something <b>to tell</b>.", who);
    Debug_Log_Entry("and process %lu <looks for a fault>", GetCurrentProcessId());
}

void Switch_Debugging_On() {
    CKMFile file;
    Require(file.Open(In_Root("logVars.txt").c_str(), true, true) == 0, "the debug switch can be made");
}

long Lines_Of_Log() {
    const std::string content = Content_Of(In_Root("log.html"));
    return std::count(content.begin(), content.end(), '\n');
}

} // namespace

void Write_A_Log() {
    Begin_Chapter("A log, and messages");
    Switch_Debugging_On();
    Listener listener(Answers);
    Write_Entries("first");
    Neighbour second("log");
    Require(second.Hear() == "listening", "the second process is registered");
    Broadcast(Questions, "Is anybody there?");
    const std::string question = second.Hear(), answer = listener.Hear();
    Require(second.Wait() == 0, "the second process ends well");
    Tell("Process %d hears from %s", second.Id(), question.c_str());
    Tell("Process %lu hears from %s", GetCurrentProcessId(), answer.c_str());
    Require(Lines_Of_Log() == 5, "the log has a head and four entries");
    char path[4096];
    Require(Host_Path(In_Root("log.html").c_str(), path, sizeof path), "the log has a place");
    Tell("Both wrote an entry and a debug entry to %s;", In_Root("log.html").c_str());
    Tell("a browser shows it: %s", path);
}

int Log_And_Answer() {
    Listener listener(Questions);
    Write_Entries("second");
    std::printf("listening\n");
    std::fflush(stdout);
    std::printf("%s\n", listener.Hear().c_str());
    Broadcast(Answers, "Yes, I am.");
    return 0;
}
