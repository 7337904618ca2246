// Lists and the dictionary beside the standard vector and QVector.
#include "race.h"

#include <QVector>
#include <algorithm>
#include <cstdint>
#include <morvane/containers/mutable_array.h>
#include <morvane/containers/mutable_dictionary.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsOf(std::size_t count) {
    std::mt19937 random(11);
    Pairs pairs;
    for (std::size_t index = 0; index < count; ++index) {
        pairs.emplace_back("key" + std::to_string(random() % 1'000'000'000), "value" + std::to_string(index));
    }
    return pairs;
}

} // namespace

int main(int count, char ** arguments) {
    race::Race contest(count, arguments);
    std::string const group = "lists and dictionary";
    std::uint32_t const many = 1'000'000;
    int item = 0;

    contest.row(group, "append 1,000,000 pointers", many,
                {{"Morvane",
                  [&] {
                      _MutableArray list;
                      for (std::uint32_t i = 0; i < many; ++i) {
                          list.add(&item);
                      }
                      race::keep(list.get_count());
                  }},
                 {"std::vector",
                  [&] {
                      std::vector<void *> list;
                      for (std::uint32_t i = 0; i < many; ++i) {
                          list.push_back(&item);
                      }
                      race::keep(list.data());
                  }},
                 {"QVector", [&] {
                      QVector<void *> list;
                      for (std::uint32_t i = 0; i < many; ++i) {
                          list.append(&item);
                      }
                      race::keep(list.data());
                  }}});

    contest.row(group, "append 10 pointers", 1000,
                {{"Morvane",
                  [&] {
                      for (int time = 0; time < 100; ++time) {
                          _MutableArray list;
                          for (int i = 0; i < 10; ++i) {
                              list.add(&item);
                          }
                          race::keep(list.get_count());
                      }
                  }},
                 {"std::vector",
                  [&] {
                      for (int time = 0; time < 100; ++time) {
                          std::vector<void *> list;
                          for (int i = 0; i < 10; ++i) {
                              list.push_back(&item);
                          }
                          race::keep(list.data());
                      }
                  }},
                 {"QVector", [&] {
                      for (int time = 0; time < 100; ++time) {
                          QVector<void *> list;
                          for (int i = 0; i < 10; ++i) {
                              list.append(&item);
                          }
                          race::keep(list.data());
                      }
                  }}});

    Pairs const pairs = pairsOf(1000);
    _MutableDictionary dictionary;
    for (auto const & pair : pairs) {
        dictionary.add(pair.first.c_str(), pair.second.c_str());
    }
    contest.row(group, "look up by key in 1,000 items", 1000,
                {{"Morvane",
                  [&] {
                      for (auto const & pair : pairs) {
                          race::keep(dictionary.keyIndex(pair.first.c_str()));
                      }
                  }},
                 {"std::vector of pairs", [&] {
                      for (auto const & pair : pairs) {
                          char const * key = pair.first.c_str();
                          race::keep(std::find_if(pairs.begin(), pairs.end(),
                                                  [key](auto const & entry) { return entry.first == key; })
                                     - pairs.begin());
                      }
                  }}});

    Pairs const unsorted = pairsOf(contest.quick() ? 20'000 : 100'000);
    if (contest.wants(group, "sort 100,000 items")) {
        std::vector<double> ours;
        std::vector<double> standard;
        for (int round = -1; round < contest.rounds(); ++round) {
            _MutableDictionary items;
            for (auto const & pair : unsorted) {
                items.add(pair.first.c_str(), pair.second.c_str());
            }
            // The standard vector sorts the same thing: pointers to pairs.
            std::vector<std::pair<std::string, std::string> const *> entries;
            for (auto const & pair : unsorted) {
                entries.push_back(&pair);
            }
            double const start = race::now();
            items.sortBy(_DictionaryItem::sortByKey);
            double const between = race::now();
            std::sort(entries.begin(), entries.end(),
                      [](auto const * a, auto const * b) { return a->first < b->first; });
            double const end = race::now();
            race::keep(entries.data());
            if (round >= 0) {
                ours.push_back(between - start);
                standard.push_back(end - between);
            }
        }
        contest.record(group, "sort 100,000 items", static_cast<double>(unsorted.size()), "Morvane", ours);
        contest.record(group, "sort 100,000 items", static_cast<double>(unsorted.size()), "std::sort", standard);
    }
    return 0;
}
