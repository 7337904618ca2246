#include "counting_heap.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <morvane/containers/container.h>
#include <morvane/containers/mutable_array.h>
#include <morvane/containers/stack.h>
#include <morvane/core/lifecycle.h>
#include <morvane/core/memory.h>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

/// No test leaves a block behind in the heap.
class Lists : public testing::Test {
    counting_heap::LeakCheck check;
};
using MutableArray = Lists;
using Container = Lists;
using Stack = Lists;

constexpr std::uint32_t none = 0xFFFFFFFF;

/// An object that notes its end.
class Mark : public _Object {
public:
    static inline std::set<Mark const *> live;
    static inline std::vector<int> ended;

    explicit Mark(int number_ = 0) : number(number_) { live.insert(this); }
    Mark(Mark const &) = delete;
    ~Mark() override {
        EXPECT_EQ(live.erase(this), 1u) << "deleted twice";
        ended.push_back(number);
    }
    Mark & operator=(Mark const &) = delete;

    /// The numbers of those that ended since the last call, in their order.
    static std::vector<int> takeEnded() { return std::exchange(ended, {}); }

    int number;
};

/// Plain pointers to tell apart.
std::array<int, 64> targets;

void fill(_MutableArray & array, int count) {
    for (int index = 0; index < count; ++index) {
        array.add(&targets[static_cast<std::size_t>(index)]);
    }
}

void fill(_Container & container, int first, int last) {
    for (int number = first; number <= last; ++number) {
        container.addObject(new Mark(number));
    }
}

std::vector<int> numbersOf(_Container const & container) {
    std::vector<int> numbers;
    for (std::uint32_t index = 0; index < container.get_count(); ++index) {
        auto const * const mark = static_cast<Mark const *>(container.getObject(index));
        numbers.push_back(mark == nullptr ? 0 : mark->number);
    }
    return numbers;
}

/// Shows its list, lets a test set the count, and notes which virtual operations are called.
struct OpenArray : _MutableArray {
    using _MutableArray::_MutableArray, _MutableArray::get_list, _MutableArray::set_count;

    void * getItem(std::uint32_t index) const override {
        calls += "get " + std::to_string(index) + ";";
        return _MutableArray::getItem(index);
    }
    void deleteAll() override {
        calls += "delete all;";
        _MutableArray::deleteAll();
    }
    void deleteAt(std::uint32_t index, std::uint32_t number) override {
        calls += "delete " + std::to_string(number) + " at " + std::to_string(index) + ";";
    }

    mutable std::string calls;
};

TEST_F(MutableArray, IsSeenToGrowByDelta) {
    struct {
        std::uint32_t size, delta;
        std::vector<std::uint32_t> sizes;
    } const cases[] = {{0, 4, {4, 4, 4, 4, 8, 8}}, {3, 2, {3, 3, 3, 5, 5, 7}}, {0, 0, {1, 2, 3}}, {1, 1000, {1, 1001}}};
    for (auto const & [size, delta, sizes] : cases) {
        SCOPED_TRACE(testing::Message() << size << ' ' << delta);
        _MutableArray array(size, delta);
        for (std::uint32_t index = 0; index < sizes.size(); ++index) {
            EXPECT_EQ(array.add(&targets[index]), index);
            EXPECT_EQ(array.get_size(), sizes[index]);
        }
        for (std::uint32_t index = 0; index < array.get_size() + 3; ++index) {
            EXPECT_EQ(array[index], index < sizes.size() ? &targets[index] : nullptr);
        }
    }
}

TEST_F(MutableArray, TakesNoMemoryWhileEmptyAndFewBlocksWhileGrowing) {
    long const before = counting_heap::requests();
    _MutableArray array;
    _Container const copy{_Container()};
    EXPECT_EQ(counting_heap::requests(), before);
    while (array.get_count() < 1000000) {
        array.add(&targets[0]);
    }
    EXPECT_EQ(array.get_size(), 1000000u);
    EXPECT_LT(counting_heap::requests() - before, 40);
}

TEST_F(MutableArray, StoresAndRemovesWithinItsSizeWithoutMoving) {
    OpenArray array(5, 4);
    for (std::uint32_t index : {0u, 4u, 5u, none}) {
        array.setItem(index, &targets[index % 64]);
        EXPECT_EQ(array.getItem(index), index < 5 ? &targets[index] : nullptr);
    }
    fill(array, 5);
    array.removeAt(1, 2);
    array.removeAt(5, none);
    array.insertAt(0, &targets[9]);
    array.insertAt(0, _MutableArray(array));
    array.insertBefore(&targets[0], &targets[9]);
    array.pack();
    std::vector<void *> const left{&targets[0], nullptr, nullptr, &targets[3], &targets[4]};
    EXPECT_EQ(std::vector<void *>(array.get_list(), array.get_list() + 5), left);
    array.removeAt(4, none);
    EXPECT_TRUE(array[3] == &targets[3] && array[4] == nullptr);
    array.removeAll();
    EXPECT_TRUE(array.get_count() == 5 && array[3] == nullptr);
    array.freeExtra();
    EXPECT_TRUE(array.get_size() == 0 && array.get_list() == nullptr && array.get_count() == 5);
    // What is added now is not lost either.
    EXPECT_EQ(array.add(&targets[7]), 5u);
    EXPECT_EQ(array[5], &targets[7]);
    array.copy(_MutableArray());
    EXPECT_TRUE(array.get_count() == 0 && array.get_size() == 9 && array[5] == nullptr);
}

TEST_F(MutableArray, WorksThroughTheVirtualOperations) {
    OpenArray source;
    fill(source, 2);
    OpenArray target;
    fill(target, 3);
    target.append(source);
    EXPECT_EQ(source.calls + target.calls, "get 0;get 1;");
    target.copy(source);
    EXPECT_TRUE(target.get_count() == 2 && target[1] == &targets[1]);
    EXPECT_EQ(target.calls, "delete all;delete 5 at 0;get 1;");
}

TEST_F(MutableArray, ChangesNothingWhenItCannotGrow) {
    OpenArray array;
    array.set_size(none);
    array.set_count(none);
    EXPECT_EQ(array.add(&targets[0]), none);
    array.default_ctor_closure();
    fill(array, 8);
    counting_heap::refuseAfter(0);
    EXPECT_EQ(array.add(&targets[9]), none);
    EXPECT_TRUE(array.get_count() == 8 && array.get_size() == 8);
    EXPECT_EQ(_MutableArray(5, 1).get_size(), 0u);
    // The block that is twice as large may be refused where the one that is needed is not.
    counting_heap::refuseOnce(0);
    EXPECT_EQ(array.add(&targets[9]), 8u);
    EXPECT_EQ(array[7], &targets[7]);
}

TEST_F(MutableArray, SharesItsListWithCopies) {
    _MutableArray array;
    fill(array, 3);
    _MutableArray copy(array);
    copy.setItem(0, &targets[9]);
    array.removeAt(1, 1);
    EXPECT_TRUE(array[0] == &targets[9] && copy[1] == nullptr);
    _MutableArray other(8);
    other = copy;
    EXPECT_TRUE(other.get_count() == 3 && other.get_size() == 4);
    // Both have room for one more, and neither loses it.
    EXPECT_TRUE(array.add(&targets[7]) == 3 && copy.add(&targets[8]) == 3);
    EXPECT_TRUE(array[3] == &targets[7] && copy[3] == &targets[8] && copy[0] == &targets[9]);
    fill(other, 5);
    other.deleteAll();
    array.append(array);
    array.copy(array);
    EXPECT_TRUE(array.get_count() == 8 && array[7] == &targets[7] && array[4] == &targets[9]);
    array.default_ctor_closure();
    EXPECT_EQ(array.get_count() + array.get_size(), 0u);
}

TEST_F(Container, DeletesItsItemsInOrderAndPassesOverNull) {
    {
        _Container container;
        fill(container, 1, 5);
        std::unique_ptr<_Object> const removed(container.getObject(2));
        container.removeAt(2, 1);
        container.deleteAt(0, 2);
        EXPECT_EQ(Mark::takeEnded(), (std::vector{1, 2}));
        EXPECT_TRUE(container.getObject(0) != nullptr && container.get_count() == 5);
        container.removeAt(0, 2);
        container.addObject(nullptr);
        container.deleteAll();
        EXPECT_EQ(Mark::takeEnded(), (std::vector{4, 5}));
        EXPECT_EQ(container.get_count(), 0u);
        fill(container, 6, 7);
        container.setItem(5, new Mark(8));
        container.deleteAt(5, none);
    }
    EXPECT_EQ(Mark::takeEnded(), (std::vector{8, 3, 6, 7}));
}

// Sharers read what the others do; the last one that owns deletes, and one that must grow takes the items along.
TEST_F(Container, SharesItsItemsUntilOneGrowsOrTheLastOwnerGoes) {
    _Container watching;
    {
        auto first = std::make_unique<_Container>();
        fill(*first, 1, 3);
        _Container const last(*first);
        fill(watching, 7, 7);
        watching = last;
        watching.set_deleteAll(false);
        EXPECT_FALSE(_Container(watching).get_deleteAll());
        first.reset();
        EXPECT_EQ(numbersOf(watching), (std::vector{1, 2, 3}));
    }
    EXPECT_EQ(Mark::takeEnded(), (std::vector{7, 1, 2, 3}));
    EXPECT_EQ(numbersOf(watching), (std::vector{0, 0, 0}));
    {
        _Container left;
        fill(left, 1, 4);
        {
            _Container grown(left);
            fill(grown, 5, 5);
            EXPECT_EQ(numbersOf(left), (std::vector{1, 2, 3, 4}));
            // Bare pointers are not deleted, and what takes their place belongs to the container again.
            left.deleteAt(0, 1);
            left.setItem(1, new Mark(9));
        }
        EXPECT_EQ(Mark::takeEnded(), (std::vector{1, 2, 3, 4, 5}));
        left.addObject(new Mark(10));
    }
    EXPECT_EQ(Mark::takeEnded(), (std::vector{9, 10}));
    // One that only borrows leaves them behind.
    {
        _Container owner;
        fill(owner, 1, 4);
        watching = owner;
        watching.set_deleteAll(false);
        fill(watching, 5, 5);
        watching.set_deleteAll(true);
    }
    EXPECT_EQ(Mark::takeEnded(), (std::vector{1, 2, 3, 4}));
    _Container source;
    fill(source, 6, 7);
    watching.copy(source);
    EXPECT_EQ(Mark::takeEnded(), std::vector{5});
    EXPECT_EQ(numbersOf(watching), (std::vector{6, 7}));
    watching.default_ctor_closure();
    EXPECT_EQ(Mark::takeEnded(), (std::vector{6, 7}));
    source.removeAll();
}

/// Its end uses the container that it stands in.
struct Meddler : _Object {
    explicit Meddler(_Container & container_) : container(container_) {}
    ~Meddler() override { container.addObject(new Mark(5)); }

    _Container & container;
};

TEST_F(Container, DeletesEachItemOnceWhereverElseItStands) {
    {
        _Container container;
        fill(container, 1, 2);
        container.append(container);
        container.append(_Container(container));
        EXPECT_EQ(numbersOf(container), (std::vector{1, 2, 1, 2, 1, 2, 1, 2}));
        _Container const & same = container;
        container = same;
        EXPECT_EQ(Mark::takeEnded(), std::vector<int>{});
        static_cast<_MutableArray &>(container) = _MutableArray(2);
        EXPECT_EQ(Mark::takeEnded(), (std::vector{1, 2}));
        container.addObject(new Meddler(container));
        container.addObject(new Meddler(container));
    }
    EXPECT_EQ(Mark::takeEnded(), (std::vector{5, 5}));
}

// Whatever is shared, grown and let go, in whatever order: each object is deleted once and none is forgotten.
TEST_F(Container, DeletesEachItemOnceWhateverItsSharersDo) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        std::vector<_Container> containers(1);
        containers.reserve(6); // they copy at the calls below alone
        for (int step = 0; step < 200; ++step) {
            _Container & one = containers[random() % containers.size()];
            _Container const & other = containers[random() % containers.size()];
            auto const choice = random() % 12;
            // A heap that refuses now and then must not lose an object either.
            counting_heap::refuseOnce(seed % 2 == 0 ? 1000000 : static_cast<long>(random() % 8));
            if (choice == 0 && containers.size() < 6) {
                containers.push_back(other);
            } else if (choice == 1) {
                one = other;
            } else if (choice == 2) {
                one.deleteAll();
                one.freeExtra();
            } else if (choice == 3 && containers.size() > 1) {
                one = containers.back();
                containers.pop_back();
            } else if (choice == 4 && one.get_count() < 20) {
                one.append(one);
            } else if (auto mark = std::make_unique<Mark>(); one.addObject(mark.get()) != none) {
                static_cast<void>(mark.release());
            }
            counting_heap::serveAll();
        }
        containers.clear();
        EXPECT_TRUE(std::exchange(Mark::live, {}).empty()) << "seed " << seed;
    }
    Mark::takeEnded();
}

TEST_F(Stack, GivesBackInReverse) {
    for (std::uint32_t partSize : {1u, 3u, 8u}) {
        _Stack stack(2, partSize);
        char item[9]{};
        EXPECT_TRUE(stack.isFull() && !stack.isEmpty());
        EXPECT_FALSE(stack.pop(item) || stack.push(nullptr));
        EXPECT_TRUE(stack.push("abcdefgh"));
        EXPECT_FALSE(stack.isFull() || stack.isEmpty() || stack.pop(nullptr));
        EXPECT_TRUE(stack.push("ABCDEFGH") && !stack.isFull() && stack.isEmpty());
        EXPECT_FALSE(stack.push("12345678"));
        for (std::string const text : {"ABCDEFGH", "abcdefgh"}) {
            EXPECT_TRUE(stack.pop(item));
            EXPECT_EQ(item, text.substr(0, partSize));
        }
        EXPECT_FALSE(stack.pop(item));
    }
    _Stack large(0x10000, 0x10000);
    EXPECT_FALSE(large.push(&large)) << "more than 32 bits count";
    large.set_pointer(0);
    EXPECT_FALSE(large.pop(&large));
}

TEST_F(Stack, ReleasesSharedStorageOnceWhoeverGoesLast) {
    std::int32_t const released = globalProcessMemory->heapUnallocationCount();
    std::int32_t item = 7;
    for (std::size_t order = 0; order < 6; ++order) {
        std::array<std::unique_ptr<_Stack>, 3> stacks;
        stacks[0] = std::make_unique<_Stack>(4, 4);
        stacks[1] = std::make_unique<_Stack>(*stacks[0]);
        stacks[2] = std::make_unique<_Stack>(1, 1);
        *stacks[2] = *stacks[1];
        _Stack const & same = *stacks[2];
        *stacks[2] = same;
        EXPECT_TRUE(stacks[0]->push(&item));
        stacks[1]->set_pointer(3);
        EXPECT_TRUE(stacks[1]->pop(&(item = 0)) && item == 7);
        stacks[order % 3].reset();
        stacks[(order % 3 + 1 + order / 3) % 3].reset();
    }
    EXPECT_EQ(globalProcessMemory->heapUnallocationCount() - released, 12);
    // A block that was set is owned, and no longer shared.
    _Stack stack(2, 4);
    _Stack copy(stack);
    copy.set_stack(globalProcessMemory->heapAllocate(8, false));
    EXPECT_TRUE(stack.push(&item) && copy.push("other") && stack.pop(&(item = 0)));
    EXPECT_EQ(item, 7);
}

} // namespace
