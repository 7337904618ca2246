#include "race.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace race {

Race::Race(int count, char ** arguments) {
    for (int index = 1; index < count; ++index) {
        bool const more = index + 1 < count;
        if (std::strcmp(arguments[index], "--quick") == 0) {
            quick_ = true;
            rounds_ = 3;
        } else if (std::strcmp(arguments[index], "--rounds") == 0 && more) {
            rounds_ = std::max(1, std::atoi(arguments[++index]));
        } else if (std::strcmp(arguments[index], "--only") == 0 && more) {
            only_ = arguments[++index];
        } else if (std::strcmp(arguments[index], "--output") == 0 && more) {
            output_ = std::fopen(arguments[++index], "a");
            if (output_ == nullptr) {
                std::perror(arguments[index]);
                std::exit(1);
            }
        } else {
            std::fprintf(stderr, "usage: %s [--quick] [--rounds N] [--only TEXT] [--output FILE]\n", arguments[0]);
            std::exit(2);
        }
    }
}

Race::~Race() {
    if (output_ != stdout) {
        std::fclose(output_);
    }
}

bool Race::wants(std::string const & group, std::string const & name) const {
    return only_.empty() || group.find(only_) != std::string::npos || name.find(only_) != std::string::npos;
}

double timeOf(std::function<void()> const & work, double least) {
    int runs = 0;
    double const start = now();
    double passed = 0;
    do {
        work();
        ++runs;
        passed = now() - start;
    } while (passed < least);
    return passed / runs;
}

double medianOf(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Race::row(std::string const & group, std::string const & name, double work,
               std::vector<Contestant> const & contestants) {
    if (!wants(group, name)) {
        return;
    }
    double const least = quick_ ? 0.002 : 0.01;
    std::vector<std::vector<double>> seconds(contestants.size());
    for (Contestant const & contestant : contestants) {
        contestant.run();
    }
    for (int round = 0; round < rounds_; ++round) {
        for (std::size_t turn = 0; turn < contestants.size(); ++turn) {
            std::size_t const index = (turn + static_cast<std::size_t>(round)) % contestants.size();
            seconds[index].push_back(timeOf(contestants[index].run, least));
        }
    }
    for (std::size_t index = 0; index < contestants.size(); ++index) {
        record(group, name, work, contestants[index].name, seconds[index]);
    }
}

void Race::record(std::string const & group, std::string const & name, double work, std::string const & contestant,
                  std::vector<double> seconds) {
    std::sort(seconds.begin(), seconds.end());
    std::fprintf(output_,
                 "{\"group\": \"%s\", \"row\": \"%s\", \"contestant\": \"%s\", \"work\": %.0f, \"rounds\": %zu, "
                 "\"seconds\": %.9g, \"least\": %.9g, \"most\": %.9g}\n",
                 group.c_str(), name.c_str(), contestant.c_str(), work, seconds.size(), medianOf(seconds),
                 seconds.front(), seconds.back());
    std::fflush(output_);
}

void Race::figure(std::string const & group, std::string const & name, std::string const & contestant, double value) {
    std::fprintf(output_, "{\"group\": \"%s\", \"row\": \"%s\", \"contestant\": \"%s\", \"value\": %.9g}\n",
                 group.c_str(), name.c_str(), contestant.c_str(), value);
    std::fflush(output_);
}

} // namespace race
