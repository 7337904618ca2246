// A race: contestants do the same work in turns, in one process, and the median of their rounds is what counts.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace race {

/// Keeps a result from being optimised away.
template <typename Value>
inline void keep(Value const & value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

/// One library at one piece of work.
struct Contestant {
    std::string name;
    /// Does the work once. What it needs ready stands outside; it is run unmeasured once first.
    std::function<void()> run;
};

/// How long and how often, and where the figures go.
class Race {
public:
    /// Options of the command line: `--quick`, `--rounds N`, `--only TEXT` (rows whose group or name holds TEXT),
    /// `--output FILE`.
    Race(int count, char ** arguments);
    Race(Race const &) = delete;
    ~Race();

    Race & operator=(Race const &) = delete;

    /// Runs all contestants in turns, each turn long enough to be measured, and writes one line of figures for each.
    /// `work` is what one run moves, in bytes or operations, for the page.
    void row(std::string const & group, std::string const & name, double work,
             std::vector<Contestant> const & contestants);

    /// Writes the figures of a row that was timed elsewhere: seconds of each round by contestant.
    void record(std::string const & group, std::string const & name, double work, std::string const & contestant,
                std::vector<double> seconds);

    /// Writes one figure that is no time, such as peak memory in bytes.
    void figure(std::string const & group, std::string const & name, std::string const & contestant, double value);

    [[nodiscard]] bool wants(std::string const & group, std::string const & name) const;
    [[nodiscard]] bool quick() const { return quick_; }
    [[nodiscard]] int rounds() const { return rounds_; }

private:
    bool quick_ = false;
    int rounds_ = 9;
    std::string only_;
    std::FILE * output_ = stdout;
};

/// Seconds since some fixed moment.
inline double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Seconds of one run of `work`, repeated until `least` seconds have passed.
double timeOf(std::function<void()> const & work, double least);

double medianOf(std::vector<double> values);

} // namespace race
