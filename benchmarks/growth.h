#pragma once
// How the time of an operation grows with the size of what it works on.
//
//     measure::Growth growth("find", 0.2);
//     for (const long size : measure::Sizes(10000)) {
//         Filled filled(size);
//         growth.At(size, MEASURED { measure::Keep(filled.Find()); });
//     }
//
// The exponent is the slope of a straight line laid through the logarithms of size and time by least squares:
// 0 for a time that does not depend on the size, 1 for one in proportion to it. The slope between the two
// greatest sizes is told as well, because what a call costs in any case hides the growth at small ones.

#include <benchmarks/measure.h>

#include <cmath>
#include <string>
#include <vector>

namespace measure {

/// 10, 100, 1,000 and so on.
inline std::vector<long> Sizes(long last) {
    std::vector<long> sizes;
    for (long size = 10; size <= last; size *= 10) sizes.push_back(size);
    return sizes;
}

class Growth {
  public:
    /// The exponent is wanted to be no more than `wanted`.
    Growth(const char *what, double wanted) : what_(what), wanted_(wanted) {}
    ~Growth() { Tell(); }
    Growth(const Growth &) = delete;
    Growth &operator=(const Growth &) = delete;

    template <class Work>
    void At(long size, Work work) {
        const Plan plan = Plan_For(work);
        std::vector<double> figures(plan.rounds);
        for (int round = 0; round < plan.rounds; ++round)
            figures[round] = Time_In_Round<ProcessorClock>(round, work, plan.calls);
        points_.push_back({static_cast<double>(size), Median(figures)});
    }

  private:
    struct Point {
        double size, nanoseconds;
    };

    double Slope(std::size_t from) const {
        double x = 0, y = 0, xx = 0, xy = 0;
        const double count = static_cast<double>(points_.size() - from);
        for (std::size_t i = from; i < points_.size(); ++i) {
            const double size = std::log(points_[i].size), taken = std::log(points_[i].nanoseconds);
            x += size;
            y += taken;
            xx += size * size;
            xy += size * taken;
        }
        return (count * xy - x * y) / (count * xx - x * x);
    }

    void Tell() const {
        const double exponent = Slope(0), last = Slope(points_.size() - 2);
        std::string points;
        std::printf("%-48s", what_);
        for (const Point &point : points_) {
            std::printf(" %.0f: %.0f,", point.size, point.nanoseconds);
            points += (points.empty() ? "[" : ", [") + std::to_string(static_cast<long>(point.size)) + ", " +
                      std::to_string(point.nanoseconds) + "]";
        }
        std::printf(" exponent %.2f, at the end %.2f, wanted %.2f%s\n", exponent, last, wanted_,
                    exponent <= wanted_ ? "" : "  missed");
        std::fflush(stdout);
        Write_Line("{\"component\": \"%s\", \"what\": \"%s\", \"points\": [%s], \"exponent\": %.3f, "
                   "\"last\": %.3f, \"wanted\": %.2f}\n",
                   Component, what_, points.c_str(), exponent, last, wanted_);
    }

    const char *what_;
    double wanted_;
    std::vector<Point> points_;
};

inline void Growth_Heading(const char *component) {
    Component = component;
    std::printf("\n%s, as it grows (size: ns)\n", component);
}

} // namespace measure
