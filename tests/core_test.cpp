#include <gtest/gtest.h>
#include <memory>
#include <morvane/core/crt.h>
#include <morvane/core/def.h>
#include <morvane/core/element.h>
#include <morvane/core/list.h>
#include <morvane/core/mutable_list.h>
#include <morvane/core/node.h>
#include <morvane/core/object.h>
#include <morvane/core/sys.h>
#include <morvane/core/system_utility.h>
#include <morvane/core/thread.h>
#include <morvane/core/writer.h>
#include <type_traits>

namespace {

template <typename Class>
class SmallClass : public testing::Test {};

using SmallClasses =
    testing::Types<_Object, _Element, _List, _MutableList, _Writer, _Node, _Thread, CRT, DEF, SYS, _SystemUtility>;
TYPED_TEST_SUITE(SmallClass, SmallClasses);

template <typename Class>
struct Derived : Class {
    std::shared_ptr<int> token;
};

TYPED_TEST(SmallClass, CanBeCopiedAssignedAndDeletedByItsBase) {
    TypeParam object;
    TypeParam copy(object);
    EXPECT_EQ(&(copy = object), &copy);
    auto derived = std::make_unique<Derived<TypeParam>>();
    std::weak_ptr<int> const gone(derived->token = std::make_shared<int>());
    std::unique_ptr<TypeParam>(std::move(derived)).reset();
    EXPECT_TRUE(gone.expired());
    if constexpr (std::is_base_of_v<_Object, TypeParam>) {
        EXPECT_EQ(object.vmtPointer(), nullptr);
    }
    if constexpr (std::is_same_v<_Thread, TypeParam>) {
        object.run();
    }
}

} // namespace
