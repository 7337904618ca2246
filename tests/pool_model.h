// A pool of 16-byte units as it is told: a walk along the chain for everything.
#pragma once

#include <algorithm>
#include <cstdint>
#include <morvane/core/memory_block.h>
#include <vector>

struct PlainPool {
    static constexpr std::size_t headBytes = 24;
    static constexpr std::size_t partBytes = 24;

    struct PlainNode {
        _MemoryBlock::_MemoryNode * node;
        std::vector<std::uint16_t> stack;

        char * data() const { return reinterpret_cast<char *>(node) + headBytes; }
    };

    /// Takes the next unit; whether it is the one that a pool gave out. A node of the pool becomes known by its first
    /// unit.
    bool allocates(char * unit) {
        auto found = std::find_if(chain.begin(), chain.end(), [](auto & any) { return !any.stack.empty(); });
        if (found == chain.end()) {
            add(chain.size()).node = reinterpret_cast<_MemoryBlock::_MemoryNode *>(unit - headBytes);
            found = chain.end() - 1;
        }
        std::uint16_t const index = found->stack.back();
        found->stack.pop_back();
        return unit == found->data() + index * partBytes;
    }

    /// A node with all units free, at that place of the chain.
    PlainNode & add(std::size_t place) {
        auto const added = chain.insert(chain.begin() + static_cast<std::ptrdiff_t>(place), {nullptr, {}});
        for (std::uint16_t unit = unitCount; unit != 0;) {
            added->stack.push_back(--unit);
        }
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

    std::uint16_t unitCount;
    std::vector<PlainNode> chain{};
};
