#pragma once
// Where the measurements say what they found: a table for people, and for ./dev bench a line of JSON each in
// the file that KELMARA_BENCH_FILE names. Names have neither quotes nor backslashes.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace measure {

/// What is measured from here on, and who does the same work beside it. Set by Heading.
inline const char *Component = "", *Peer = "";

inline void Heading(const char *component, const char *peer) {
    Component = component;
    Peer = peer;
    std::printf("\n%s (peer: %s)\n%-48s %12s %12s %8s %8s\n", component, peer, "", "ours, ns", "peer, ns",
                "ratio", "wanted");
}

/// A comparison: medians of so many rounds in turns. The spread is that of the ratios of single rounds: how
/// far the quarters of them are apart, as a part of their median.
struct Comparison {
    double ours, peers; // nanoseconds
    double spread;
    int rounds;
};

[[gnu::format(printf, 1, 2)]] inline void Write_Line(const char *format, ...) {
    const char *const path = std::getenv("KELMARA_BENCH_FILE");
    std::FILE *const file = path ? std::fopen(path, "a") : nullptr;
    if (!file) return;
    std::va_list values;
    va_start(values, format);
    std::vfprintf(file, format, values);
    va_end(values);
    std::fclose(file);
}

inline void Report(const char *what, const Comparison &found, double wanted) {
    const double ratio = found.ours / found.peers;
    std::printf("%-48s %12.1f %12.1f %8.2f %8.2f%s\n", what, found.ours, found.peers, ratio, wanted,
                ratio <= wanted ? "" : "  missed");
    std::fflush(stdout);
    Write_Line("{\"component\": \"%s\", \"what\": \"%s\", \"ours\": %.2f, \"peer\": \"%s\", \"peers\": %.2f, "
               "\"ratio\": %.4f, \"rounds\": %d, \"spread\": %.3f, \"wanted\": %.2f}\n",
               Component, what, found.ours, Peer, found.peers, ratio, found.rounds, found.spread, wanted);
}

/// A figure that nothing stands beside but the time that it may take.
inline void Report_Alone(const char *what, double nanoseconds, int rounds, double wanted) {
    std::printf("%-48s %12.1f %12s %8s %8.0f%s\n", what, nanoseconds, "", "", wanted,
                nanoseconds <= wanted ? "" : "  missed");
    std::fflush(stdout);
    Write_Line(
        "{\"component\": \"%s\", \"what\": \"%s\", \"ours\": %.2f, \"rounds\": %d, \"allowed\": %.0f}\n",
        Component, what, nanoseconds, rounds, wanted);
}

} // namespace measure
