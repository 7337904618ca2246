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

std::string input;

/// Keeps the input of a run that ended by `expect`.
void keep(int) {
    std::ofstream("failed_input", std::ios::binary) << input;
    std::fputs("The input is kept in ./failed_input\n", stderr);
}

void run(std::string const & bytes) {
    input = bytes;
    // A block of its own, so that a sanitizer sees a read behind its end.
    std::vector<std::uint8_t> const block(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(block.data(), block.size());
}

std::string madeByChance(std::mt19937 & random, std::vector<std::string> const & seeds,
                         std::vector<std::string> const & words) {
    std::string made = random() % 3 == 0 ? "" : seeds[random() % seeds.size()];
    for (std::size_t count = 1 + random() % 24; count != 0; --count) {
        std::size_t const place = random() % (made.size() + 1);
        std::string const & seed = seeds[random() % seeds.size()];
        std::string const pieces[] = {"", std::string(1, static_cast<char>(random())), words[random() % words.size()],
                                      seed.substr(random() % (seed.size() + 1), random() % 32)};
        std::string const & piece = pieces[random() % 4];
        made.replace(place, piece.empty() ? random() % 16 : 0, piece);
    }
    return made;
}

} // namespace

int main(int count, char ** arguments) {
    std::signal(SIGABRT, keep);
    int rounds = 0;
    std::vector<std::string> seeds{""};
    std::vector<std::string> words{"0"};
    auto const take = [&](std::filesystem::path const & path) {
        std::ifstream file(path, std::ios::binary);
        std::string const bytes(std::istreambuf_iterator<char>(file), {});
        run(bytes);
        // Inputs made of a large one would take long and find little.
        seeds.push_back(bytes.size() > 4096 ? "" : bytes);
    };
    for (int index = 1; index < count; ++index) {
        std::string const argument = arguments[index];
        if (argument == "--random" && index + 1 < count) {
            rounds = std::stoi(arguments[++index]);
        } else if (argument == "--dictionary" && index + 1 < count) {
            std::ifstream file(arguments[++index]);
            for (std::string line; std::getline(file, line);) {
                // Words in quotes, one a line.
                words.push_back(line.starts_with('"') ? line.substr(1, line.size() - 2) : "");
            }
        } else if (std::filesystem::is_directory(argument)) {
            std::for_each(std::filesystem::directory_iterator(argument), {}, take);
        } else {
            take(argument);
        }
    }
    // The order of a folder must not count.
    std::sort(seeds.begin(), seeds.end());
    std::mt19937 random(1);
    for (; rounds > 0; --rounds) {
        run(madeByChance(random, seeds, words));
    }
}
