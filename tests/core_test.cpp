#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/crt.h>
#include <morvane/core/def.h>
#include <morvane/core/element.h>
#include <morvane/core/list.h>
#include <morvane/core/literals.h>
#include <morvane/core/mutable_list.h>
#include <morvane/core/node.h>
#include <morvane/core/object.h>
#include <morvane/core/sys.h>
#include <morvane/core/system_utility.h>
#include <morvane/core/thread.h>
#include <morvane/core/writer.h>
#include <type_traits>

using namespace morvane::literals;

namespace {

template <typename Class>
class SmallClass : public testing::Test {};

using SmallClasses =
    testing::Types<_Object, _Element, _List, _MutableList, _Writer, _Node, _Thread, CRT, DEF, SYS, _SystemUtility>;
TYPED_TEST_SUITE(SmallClass, SmallClasses);

/// Tells when it goes.
template <typename Class>
class Derived : public Class {
public:
    explicit Derived(bool & flag) : gone(flag) {}
    Derived(Derived const &) = delete;
    ~Derived() override { gone = true; }

    Derived & operator=(Derived const &) = delete;

private:
    bool & gone;
};

TYPED_TEST(SmallClass, CanBeCopiedAssignedAndDeletedByItsBase) {
    TypeParam object;
    TypeParam copy(object);
    EXPECT_EQ(&(copy = object), &copy);
    bool gone = false;
    std::unique_ptr<TypeParam>(std::make_unique<Derived<TypeParam>>(gone)).reset();
    EXPECT_TRUE(gone);
    if constexpr (std::is_base_of_v<_Object, TypeParam>) {
        EXPECT_EQ(object.vmtPointer(), nullptr);
    }
    if constexpr (std::is_same_v<_Thread, TypeParam>) {
        object.run();
    }
}

TEST(Literals, AreZeroClosedUnits) {
    constexpr unsigned short int const * text = u"a\u20AC"_w;
    EXPECT_EQ(text[0], 0x61);
    EXPECT_EQ(text[1], 0x20AC);
    EXPECT_EQ(text[2], 0);
}

} // namespace
