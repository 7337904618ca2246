// Lets several threads take blocks from the pools and give them back, and prints the statistics of the pools.

#include "console_text.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <iostream>
#include <morvane/morvane.h>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr char const * usage = "Usage: pool_report [--threads COUNT] [--blocks COUNT]\n";

constexpr char const * help = R"(
Each thread takes blocks of 1 to 2,000 bytes, fills them, holds some hundred of them at a time, and looks whether each still holds what
was put there when it goes back. The report shows the blocks that each pool gave out and took back.

  --threads COUNT    1 to 64; 4 without it
  --blocks COUNT     the blocks that each thread takes, 1 to 10,000,000; 100,000 without it

Examples:
  pool_report
  pool_report --threads 1 --blocks 1000000
)";

struct Block {
    unsigned char * bytes = nullptr;
    std::uint32_t size = 0;
    unsigned char fill = 0;
};

/// Gives a block back; false when a byte of it has changed meanwhile.
bool giveBack(Block const & block) {
    bool isIntact = true;
    for (std::uint32_t index = 0; index < block.size; ++index) {
        isIntact = isIntact && block.bytes[index] == block.fill;
    }
    globalMemoryManager->fastUnallocate(block.bytes);
    return isIntact;
}

/// What one thread does. Gives the blocks that were refused or spoilt, none if all is well.
std::size_t work(unsigned int seed, std::size_t count) {
    std::minstd_rand dice(seed);
    std::array<Block, 256> held{};
    std::size_t faults = 0;
    for (std::size_t turn = 0; turn < count; ++turn) {
        Block & place = held[dice() % held.size()];
        if (place.bytes != nullptr && !giveBack(place)) {
            ++faults;
        }
        // Small sizes come more often: an even choice of the bits first, then of the size within them.
        std::uint32_t const limit = 1U << (dice() % 11 + 1);
        place.size = static_cast<std::uint32_t>(dice()) % (limit < 2000 ? limit : 2000) + 1;
        place.fill = static_cast<unsigned char>(dice());
        place.bytes = static_cast<unsigned char *>(globalMemoryManager->fastAllocate(place.size, false));
        if (place.bytes == nullptr) {
            ++faults;
            continue;
        }
        std::memset(place.bytes, place.fill, place.size);
    }
    for (Block const & block : held) {
        if (block.bytes != nullptr && !giveBack(block)) {
            ++faults;
        }
    }
    return faults;
}

bool readCount(char const * text, std::size_t highest, std::size_t & count) {
    char * end = nullptr;
    errno = 0;
    unsigned long long const number = std::strtoull(text, &end, 10);
    count = static_cast<std::size_t>(number);
    return errno == 0 && *text >= '0' && *text <= '9' && *end == 0 && number >= 1 && number <= highest;
}

void printLine(unsigned short int const * text) {
    std::cout << "  " << toUtf8(text);
}

} // namespace

int main(int count, char ** arguments) {
    static option const longOptions[] = {
        {"threads", required_argument, nullptr, 't'},
        {"blocks", required_argument, nullptr, 'b'},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    std::size_t threadCount = 4;
    std::size_t blockCount = 100000;
    bool isRight = true;
    for (int found = 0; isRight && (found = getopt_long(count, arguments, "h", longOptions, nullptr)) != -1;) {
        switch (found) {
        case 't':
            isRight = readCount(optarg, 64, threadCount);
            break;
        case 'b':
            isRight = readCount(optarg, 10'000'000, blockCount);
            break;
        case 'h':
            std::cout << usage << help;
            return 0;
        default:
            isRight = false;
        }
    }
    if (!isRight || optind != count) {
        std::cerr << usage << "Try pool_report --help\n";
        return 2;
    }

    morvane::platform::setDebugListener(nullptr);
    std::vector<std::size_t> faults(threadCount);
    std::vector<std::thread> threads;
    for (std::size_t index = 0; index < threadCount; ++index) {
        threads.emplace_back(
            [index, blockCount, &faults] { faults[index] = work(static_cast<unsigned int>(index + 1), blockCount); });
    }
    std::size_t faultCount = 0;
    for (std::size_t index = 0; index < threadCount; ++index) {
        threads[index].join();
        faultCount += faults[index];
    }

    std::int32_t const heapCalls = globalProcessMemory->heapAllocationCount();

    std::cout << threadCount << " threads took " << blockCount << " blocks each; refused or spoilt: " << faultCount
              << '\n';
    std::cout << "pools:\n";
    morvane::platform::setDebugListener(printLine);
    globalMemoryManager->traceConsole();
    morvane::platform::setDebugListener(nullptr);
    std::cout << "calls of the heap: " << heapCalls << '\n';
    return faultCount == 0 ? 0 : 1;
}
