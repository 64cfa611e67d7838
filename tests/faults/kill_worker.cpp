// A process of the kill test: operations of all kinds, at random, until it is killed.

#include <tests/faults/kill_board.h>
#include <tests/support/registry_verbs.h>
#include <tests/support/second_process.h>
#include <tests/support/window_verbs.h>

#include <kelmara/shared_state/atom_table.h>
#include <kelmara/shared_state/instances.h>
#include <platform/kernel.h>

#include <csignal>
#include <cstring>
#include <random>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

class Worker {
  public:
    Worker(SharedBoard &board, int number, unsigned seed)
        : board_(board), number_(number), random_(seed), name_("worker " + std::to_string(number)) {
        Expect(atoms_.Initialize("KILL-TEST") == 0, "no atoms");
        for (int i = 0; i < Shared_Locks; ++i)
            locks_[i] = CreateMutexA(nullptr, FALSE, ("kill test " + std::to_string(i)).c_str());
        Look_Around(); // a program that has not waited for input yet holds up who asks for its instance
    }

    [[noreturn]] void Work() {
        using Operation = void (Worker::*)();
        static constexpr Operation Operations[] = {
            &Worker::Set_Value,   &Worker::Read_Values, &Worker::Make_And_Delete_Key, &Worker::Change_Atoms,
            &Worker::Walk_Atoms,  &Worker::Register,    &Worker::Ask_For_Instances,   &Worker::Make_Window,
            &Worker::Look_Around, &Worker::Take_A_Lock};
        for (;;) {
            const unsigned which = Any(std::size(Operations));
            board_->Begin(number_, which + 1);
            (this->*Operations[which])();
            board_->End(number_);
        }
    }

  private:
    unsigned Any(unsigned count) { return static_cast<unsigned>(random_() % count); }
    int Any_Worker() { return static_cast<int>(Any(Workers)); }
    void Expect(bool holds, const std::string &otherwise) const {
        if (!holds) board_->Fault(number_, otherwise);
    }

    // What has been told was set before.
    void Set_Value() {
        const unsigned next = board_->workers[number_].told + 1;
        const TestKey key("Kill test");
        const LONG error = key.Set(name_, std::to_string(next));
        Expect(error == 0, "value not set: " + std::to_string(error));
        if (error == 0) board_->workers[number_].told = next;
        if (Any(50) == 0) Expect(RegFlushKey(key) == 0, "registry not flushed");
    }
    void Read_Values() {
        const int other = Any_Worker();
        const unsigned told = board_->workers[other].told;
        const std::string value = TestKey("Kill test").Get("worker " + std::to_string(other));
        Expect(value == Missing ? told == 0 : std::stoul(value) >= told, "value of before: " + value);
    }
    void Make_And_Delete_Key() {
        const std::string path = "Kill test\\of " + std::to_string(Any_Worker());
        Expect(TestKey(path).error == 0, "key not made");
        const LONG error = RegDeleteKeyA(HKEY_CURRENT_USER, path.c_str());
        Expect(error == 0 || error == ERROR_FILE_NOT_FOUND, "key not deleted: " + std::to_string(error));
    }
    void Change_Atoms() {
        const long id = static_cast<long>(Any(30));
        const long made = atoms_.New_Atom(7, id, "atom", 5);
        Expect(made >= 0 || made == -183, "no atom made: " + std::to_string(made));
        if (Any(2)) atoms_.Delete_Atom(7, id);
    }
    void Walk_Atoms() {
        long count = 0;
        const auto counting = [](long, long, char *data, long user) {
            *reinterpret_cast<long *>(user) += std::strcmp(data, "atom") == 0 ? 1 : 1000;
            return true;
        };
        atoms_.Iterate_Atoms(7, counting, reinterpret_cast<long>(&count));
        Expect(count <= 30, "atoms walked: " + std::to_string(count));
    }
    void Register() {
        Expect(First_Instance(name_.c_str(), "S", window_), "not the first instance");
        SetWindowTextA(window_, ("Churned " + std::to_string(Any(100))).c_str());
        Update_Instance(name_.c_str(), window_);
        Expect(Instance_Available(name_.c_str(), "S"), "not available");
        SetWindowTextA(window_, "gone"); // so that the next one is the first again
    }
    void Ask_For_Instances() {
        (void)Instance_Available(("worker " + std::to_string(Any_Worker())).c_str(), nullptr);
    }
    void Make_Window() {
        const TestWindow made(WS_POPUP | WS_VISIBLE, {0, 0, 9, 9}, nullptr, 0, {}, "Churned");
        Expect(Title_Of(made) == "Churned", "no window made");
    }
    void Look_Around() {
        const auto look = [](HWND window, LPARAM) {
            char title[100];
            GetWindowTextA(window, title, sizeof title);
            return TRUE;
        };
        EnumChildWindows(nullptr, look, 0);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }
    // Who finds somebody inside has been told that he died there.
    void Take_A_Lock() {
        const unsigned which = Any(Shared_Locks);
        const DWORD result = WaitForSingleObject(locks_[which], 10000);
        if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
            return Expect(false, "lock not had: " + std::to_string(result));
        const unsigned before = board_->inside[which].exchange(static_cast<unsigned>(number_ + 1));
        Expect(before == 0 || result == WAIT_ABANDONED, "two inside a lock");
        const unsigned mine = board_->inside[which].exchange(0);
        Expect(mine == static_cast<unsigned>(number_ + 1), "another came into the lock");
        ReleaseMutex(locks_[which]);
    }

    SharedBoard &board_;
    const int number_;
    std::mt19937 random_;
    const std::string name_;
    CAtomTable atoms_;
    HANDLE locks_[Shared_Locks] = {};
    TestWindow window_{WS_POPUP, {0, 0, 9, 9}, nullptr, 0, {}, "gone"};
};

} // namespace

// The board, the worker's number, the seed, and the process that kills it: by its end too.
SECOND_PROCESS(kill_worker) {
    const auto &arguments = process.Arguments();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != std::stoi(arguments[3])) return 1;
    SharedBoard board(arguments[0]);
    const int number = std::stoi(arguments[1]);
    board->Begin(number, Starting);
    Worker worker(board, number, static_cast<unsigned>(std::stoul(arguments[2])));
    board->End(number);
    worker.Work();
}
