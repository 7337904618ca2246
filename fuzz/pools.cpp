// Units taken from a pool and given back, beside a plain list of stacks.

#include "fuzz_input.h"

#include <morvane/morvane.h>
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    morvane::platform::setDebugListener(nullptr);
    FuzzInput input(data, size);
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
    return 0;
}
