// Units taken from a pool and blocks from the manager, and given back, beside a plain list of stacks.

#include "fuzz_input.h"

#include <morvane/core/memory_manager.h>
#include <morvane/platform/debug_channel.h>
#include <vector>

namespace {

/// Shows the chain.
class OpenBlock : public _MemoryBlock {
public:
    using _MemoryBlock::_MemoryBlock;
    using _MemoryBlock::getFirstNode;
};

struct PlainNode {
    _MemoryBlock::_MemoryNode * node;
    std::vector<std::size_t> freeUnits;
};

void usePool(FuzzInput input) {
    auto const unitSize = static_cast<std::uint16_t>(1 + input.below(64));
    std::uint32_t const unitCount = 1 + input.value<std::uint8_t>() % 8U;
    OpenBlock block(unitSize, unitCount);
    std::vector<PlainNode> chain;
    std::vector<std::pair<char *, std::size_t>> units; // with their indices
    auto const unitOf = [&](PlainNode const & told, std::size_t index) {
        return reinterpret_cast<char *>(told.node) + 24 + index * (unitSize + 8U);
    };
    while (!input.isEmpty()) {
        std::size_t const choice = input.below(256);
        auto place = chain.begin();
        if (choice < 100 && !units.empty()) {
            std::swap(units[choice % units.size()], units.back());
            auto const [unit, index] = units.back();
            units.pop_back();
            block.unallocate(unit);
            while (unitOf(*place, index) != unit) {
                ++place;
            }
            place->freeUnits.push_back(index);
            if (place != chain.begin() && place->freeUnits.size() == unitCount) {
                chain.erase(place);
            }
        } else {
            char * const unit = static_cast<char *>(block.allocate(choice % 2 == 0));
            while (place != chain.end() && place->freeUnits.empty()) {
                ++place;
            }
            if (place == chain.end()) {
                place = chain.insert(place, {chain.empty() ? block.getFirstNode() : chain.back().node->next, {}});
                for (std::size_t index = unitCount; index != 0; --index) {
                    place->freeUnits.push_back(index - 1);
                }
            }
            units.emplace_back(unit, place->freeUnits.back());
            place->freeUnits.pop_back();
            expect(unit == unitOf(*place, units.back().second));
            expect(choice % 2 != 0 || std::string_view(unit, unitSize) == std::string(unitSize, '\0'));
            std::fill_n(unit, unitSize, '\xAA');
        }
        auto const * node = block.getFirstNode();
        for (PlainNode const & told : chain) {
            expect(node == told.node && node->freeCount == told.freeUnits.size());
            node = node->next;
        }
        expect(node == nullptr);
    }
}

void useManager(FuzzInput input) {
    _MemoryManager manager(1024);
    std::vector<std::pair<char *, std::string>> blocks; // with what was written into them
    while (!input.isEmpty() || !blocks.empty()) {
        auto const choice = input.value<std::uint8_t>();
        if (choice % 2 == 0 && !blocks.empty()) {
            std::swap(blocks[choice / 2 % blocks.size()], blocks.back());
            auto const [bytes, told] = blocks.back();
            blocks.pop_back();
            expect(std::string_view(bytes, told.size()) == told);
            manager.fastUnallocate(bytes);
        } else {
            std::uint32_t const size = input.value<std::uint16_t>() % 1100U;
            auto * const bytes = static_cast<char *>(manager.fastAllocate(size, choice % 4 == 1));
            expect(choice % 4 != 1 || std::string_view(bytes, size) == std::string(size, '\0'));
            auto const & part = *_MemoryBlock::pointerToMemoryPart(bytes);
            std::uint32_t limit = 16;
            while (limit < size) {
                limit *= 2;
            }
            expect(part.unitSize == (size > 1024 ? 0xFFFF : limit) && part.size == (size > 1024 ? size : 0));
            blocks.emplace_back(bytes, std::string(size, static_cast<char>(choice)));
            blocks.back().second.copy(bytes, size);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    morvane::platform::setDebugListener(nullptr);
    usePool({data, size});
    useManager({data, size});
    return 0;
}
