// Units taken from a pool and from a manager and given back, beside a plain walk along a chain of nodes.

#include "fuzz_input.h"

#include <algorithm>
#include <morvane/morvane.h>
#include <numeric>
#include <utility>
#include <vector>

namespace {

using Node = _MemoryBlock::_MemoryNode;

/// A pool that shows its nodes.
struct OpenBlock : _MemoryBlock {
    using _MemoryBlock::_MemoryBlock, _MemoryBlock::createNode, _MemoryBlock::fillData, _MemoryBlock::fillStack;
    using _MemoryBlock::getFirstNode, _MemoryBlock::getLastNode, _MemoryBlock::getPreviousNode, _MemoryBlock::getStack;
    using _MemoryBlock::insert, _MemoryBlock::insertAfter, _MemoryBlock::remove;
};

/// A pool as it is told.
struct PlainPool {
    static constexpr std::size_t headBytes = 24; // the header of its first unit with it

    struct PlainNode {
        Node * node;
        std::vector<std::uint16_t> stack;

        char * data() const { return reinterpret_cast<char *>(node) + headBytes; }
    };

    /// Takes the next unit; whether it is the one that a pool gave out. A node of the pool becomes known by its first
    /// unit.
    bool allocates(char * unit) {
        auto found = std::find_if(chain.begin(), chain.end(), [](auto & any) { return !any.stack.empty(); });
        if (found == chain.end()) {
            add(chain.size()).node = reinterpret_cast<Node *>(unit - headBytes);
            found = chain.end() - 1;
        }
        std::uint16_t const index = found->stack.back();
        found->stack.pop_back();
        return unit == found->data() + index * partBytes;
    }

    /// A node with all units free, at that place of the chain.
    PlainNode & add(std::size_t place) {
        auto const added = chain.insert(chain.begin() + static_cast<std::ptrdiff_t>(place), {nullptr, {}});
        added->stack.resize(unitCount);
        std::iota(added->stack.rbegin(), added->stack.rend(), std::uint16_t{0});
        return *added;
    }

    void unallocate(char const * unit) {
        auto const found = std::find_if(chain.begin(), chain.end(), [this, unit](auto & any) {
            return unit >= any.data() && unit < any.data() + unitCount * partBytes;
        });
        found->stack.push_back(static_cast<std::uint16_t>(static_cast<std::size_t>(unit - found->data()) / partBytes));
        if (found->stack.size() == unitCount && found != chain.begin()) {
            chain.erase(found);
        }
    }

    std::size_t partBytes;
    std::uint32_t unitCount;
    std::vector<PlainNode> chain{};
};

/// What a derived class does to the chain now and then.
void meddle(OpenBlock & block, PlainPool & plain, std::size_t how, std::size_t place) {
    auto & chain = plain.chain;
    if (how == 0 && !chain.empty()) {
        // It puts a node of its own somewhere behind the first.
        Node * const node = block.createNode();
        block.fillStack(node);
        block.fillData(node);
        block.insertAfter(chain[place % chain.size()].node, node);
        plain.add(place % chain.size() + 1).node = node;
    } else if (how == 1 && chain.size() > 1) {
        // It takes one away and puts it back at the end.
        auto const taken = chain.begin() + static_cast<std::ptrdiff_t>(1 + place % (chain.size() - 1));
        Node * const node = taken->node;
        block.remove(node);
        std::rotate(taken, taken + 1, chain.end());
        node->next = nullptr;
        block.insert(node);
    } else if (how == 2 && chain.size() > 1) {
        // It lets the chain begin with its second node, the first one behind that.
        Node * const second = chain[1].node;
        chain[0].node->next = second->next;
        second->next = chain[0].node;
        block.set_first(second);
        std::swap(chain[0], chain[1]);
    }
}

void expectSame(OpenBlock const & block, PlainPool const & plain) {
    Node * node = block.getFirstNode();
    Node * previous = nullptr;
    for (auto const & [told, stack] : plain.chain) {
        expect(node == told && node->freeCount == stack.size() && block.getPreviousNode(node) == previous);
        expect(std::equal(stack.begin(), stack.end(), block.getStack(node)));
        previous = std::exchange(node, node->next);
    }
    expect(node == nullptr && block.getLastNode() == previous);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    morvane::platform::setDebugListener(nullptr);
    FuzzInput input(data, size);
    auto const unitSize = static_cast<std::uint16_t>(1 + input.below(64));
    std::uint32_t const unitCount = 1 + input.value<std::uint8_t>() % 8U;
    OpenBlock block(unitSize, unitCount);
    PlainPool plain{unitSize + 8U, unitCount};
    // The manager, whose nodes can't be seen, gets the same calls.
    _MemoryManager manager(16 * unitCount);
    PlainPool managed{24, unitCount};
    std::vector<std::pair<char *, char *>> units; // of both
    while (!input.isEmpty()) {
        std::size_t const choice = input.below(256);
        if (choice < 12) {
            meddle(block, plain, choice / 4, input.below(256));
        } else if (choice < 100 && !units.empty()) {
            std::swap(units[choice % units.size()], units.back());
            auto const [unit, managedUnit] = units.back();
            units.pop_back();
            plain.unallocate(unit);
            block.unallocate(unit);
            managed.unallocate(managedUnit);
            manager.fastUnallocate(managedUnit);
        } else {
            bool const zeroed = choice % 2 == 0;
            char * const unit = static_cast<char *>(block.allocate(zeroed));
            char * const managedUnit = static_cast<char *>(manager.fastAllocate(16, zeroed));
            expect(plain.allocates(unit) && managed.allocates(managedUnit));
            expect(!zeroed || std::string_view(unit, unitSize) == std::string(unitSize, '\0'));
            std::fill_n(unit, unitSize, '\xAA');
            units.emplace_back(unit, managedUnit);
        }
        expectSame(block, plain);
    }
    return 0;
}
