// A main without a fuzzer: runs a target over files and folders, and over inputs made of their pieces by chance.
//
// usage: fuzz_TARGET_replay [--random COUNT] [--dictionary FILE] PATH...

#include "fuzz_input.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace {

std::string running;
std::string input;

/// Keeps the input of a run that ended by `expect`.
void tell(int) {
    std::ofstream("failed_input", std::ios::binary) << input;
    std::fprintf(stderr, "%s, kept in ./failed_input\n", running.c_str());
}

void run(std::string const & name, std::string const & bytes) {
    running = name;
    input = bytes;
    // A block of its own, so that a sanitizer sees a read behind its end.
    std::vector<std::uint8_t> const block(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(block.data(), block.size());
}

std::string contents(std::filesystem::path const & path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The words of a dictionary of the fuzzer: in quotes, one a line.
std::vector<std::string> wordsOf(char const * path) {
    std::ifstream file(path);
    std::vector<std::string> words;
    for (std::string line; std::getline(file, line);) {
        std::string word;
        for (std::size_t place = line.find('"') + 1; place != 0 && place + 1 < line.size(); ++place) {
            bool const isEscaped = line[place] == '\\';
            bool const isCode = isEscaped && line[place + 1] == 'x';
            word +=
                isCode ? static_cast<char>(std::stoi(line.substr(place + 2, 2), nullptr, 16)) : line[place + isEscaped];
            place += isCode ? 3 : isEscaped;
        }
        words.push_back(word);
    }
    return words;
}

std::string madeByChance(std::mt19937 & random, std::vector<std::string> const & seeds,
                         std::vector<std::string> const & words) {
    std::string made = random() % 3 == 0 ? "" : seeds[random() % seeds.size()];
    for (std::size_t count = 1 + random() % 24; count != 0; --count) {
        std::size_t const place = random() % (made.size() + 1);
        std::string const & seed = seeds[random() % seeds.size()];
        switch (random() % 4) {
        case 0:
            made.insert(place, 1, static_cast<char>(random()));
            break;
        case 1:
            made.erase(place, random() % 16);
            break;
        case 2:
            made.insert(place, seed, random() % (seed.size() + 1), random() % 32);
            break;
        default:
            made.insert(place, words[random() % words.size()]);
        }
    }
    return made;
}

} // namespace

int main(int count, char ** arguments) {
    std::signal(SIGABRT, tell);
    int rounds = 0;
    std::vector<std::string> seeds;
    std::vector<std::string> words{"0"};
    for (int index = 1; index < count; ++index) {
        std::string const argument = arguments[index];
        if (argument == "--random" && index + 1 < count) {
            rounds = std::stoi(arguments[++index]);
        } else if (argument == "--dictionary" && index + 1 < count) {
            words = wordsOf(arguments[++index]);
        } else if (std::filesystem::is_directory(argument)) {
            for (auto const & entry : std::filesystem::recursive_directory_iterator(argument)) {
                seeds.push_back(contents(entry.path()));
                run(entry.path().string(), seeds.back());
            }
        } else {
            seeds.push_back(contents(argument));
            run(argument, seeds.back());
        }
    }
    std::sort(seeds.begin(), seeds.end());
    std::erase_if(seeds, [](std::string const & seed) { return seed.size() > 4096; });
    seeds.emplace_back();
    std::mt19937 random(1);
    for (int round = 0; round < rounds; ++round) {
        run("round " + std::to_string(round), madeByChance(random, seeds, words));
    }
}
