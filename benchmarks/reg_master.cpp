// What a value costs through an open CRegMaster key: read, counted up, and set, which waits for the disk,
// beside a bare write and flush of the same bytes.

#include <benchmarks/measure.h>

#include <kelmara/system/reg_master.h>

#include <platform/machine.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned long Data_Size = 100;
constexpr unsigned long Record_Bytes = 152; // what a value of that size adds to the registry's file
constexpr int Calls = 2001, Flushed_Calls = 301;
char data[Data_Size];

void Must(bool done) {
    if (!done) std::abort();
}

// Of single calls, so that one in which the host lets others run counts no more than any other.
template <class Work>
double Median_Of_Calls(Work work) {
    std::vector<double> figures(Calls);
    for (double &figure : figures) figure = measure::Time(work, 1);
    std::nth_element(figures.begin(), figures.begin() + Calls / 2, figures.end());
    return figures[Calls / 2];
}

void Report(const char *what, double nanoseconds, double wanted) {
    std::printf("%-52s %12.0f %12.0f%s\n", what, nanoseconds, wanted,
                nanoseconds <= wanted ? "" : "  missed");
}

void Measure_Calls(CRegMaster &registry) {
    std::printf("\n%-52s %12s %12s\n", "CRegMaster", "median, ns", "wanted, ns");
    char copy[Data_Size];
    Report("read a value of 100 bytes through an open key", Median_Of_Calls([&] {
               Must(registry.GetRegEntry(measure::Hidden("value 57"), copy, Data_Size));
               measure::Keep(copy);
           }),
           2000);
    long number = 0;
    Report("read a number", Median_Of_Calls([&] {
               Must(registry.GetRegEntry(measure::Hidden("number"), &number));
               measure::Keep(number);
           }),
           2000);
    Report("set a number that others see (count it up)",
           Median_Of_Calls([&] { Must(registry.IncrDword("number") != 0); }), 20000);
    registry.SetRegEntry("number", 1);
}

void Measure_Flush(CRegMaster &registry, const std::string &folder) {
    const int file = open((folder + "/bare").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const char bytes[Record_Bytes] = {};
    off_t end = 0;
    const auto ours = [&] { Must(registry.SetRegEntry("value 57", data, Data_Size)); };
    const auto peer = [&] {
        Must(pwrite(file, bytes, sizeof bytes, end) == sizeof bytes && fdatasync(file) == 0);
        end += sizeof bytes;
    };
    std::vector<double> our_figures(Flushed_Calls), peer_figures(Flushed_Calls);
    for (int call = 0; call < Flushed_Calls; ++call) {
        our_figures[call] = measure::Time(ours, 1);
        peer_figures[call] = measure::Time(peer, 1);
    }
    for (auto *figures : {&our_figures, &peer_figures})
        std::nth_element(figures->begin(), figures->begin() + Flushed_Calls / 2, figures->end());
    const double our_median = our_figures[Flushed_Calls / 2], peer_median = peer_figures[Flushed_Calls / 2];
    const double ratio = our_median / peer_median, limit = 1.5;
    measure::Heading("CRegMaster (peer: the bytes written and flushed)");
    std::printf("%-48s %12.1f %12.1f %8.2f %8.2f%s\n", "set a value of 100 bytes, flushed", our_median,
                peer_median, ratio, limit, ratio <= limit ? "" : "  missed");
    close(file);
}

} // namespace

int main() {
    std::string folder = "/tmp/kelmara-benchmark-XXXXXX";
    if (!mkdtemp(folder.data()) || !Enter_Machine(folder.c_str())) return 1;
    measure::Use_Plain_Memory();
    {
        CRegMaster registry;
        Must(registry.CreateKey(HKEY_CURRENT_USER, "table"));
        for (int i = 0; i < 100; ++i)
            Must(registry.SetRegEntry(("value " + std::to_string(i)).c_str(), data, Data_Size));
        Must(registry.SetRegEntry("number", 1));
        Measure_Calls(registry);
        Measure_Flush(registry, folder);
    }
    Remove_Machine(folder.c_str());
    return 0;
}
