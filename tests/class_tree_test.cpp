// The shape of all public classes: bases, tables of virtual operations, access, sizes. It links the shared library.
//
// Slots are read out of pointers to members, which hold them under the Itanium C++ ABI; their number is the size of the
// table that the library exports.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <morvane/morvane.h>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>

namespace {

/// A class, its only base or `void`, and the number of its slots, of which a destructor takes two; 0 without a table.
template <typename Class, typename Base, std::size_t slots>
struct Row {};

using Tree = std::tuple<
    // clang-format off
    Row<_Object, void, 2>, Row<_Element, _Object, 2>, Row<_List, _Object, 2>, Row<_MutableList, _List, 2>,
    Row<_NamedObject, _Object, 2>, Row<_Node, _Object, 2>, Row<_Thread, _Object, 3>, Row<_Writer, _Object, 2>,
    Row<CRT, void, 2>, Row<DEF, void, 2>, Row<SYS, void, 2>,
    Row<_Memory, void, 2>, Row<_MemoryBlock, void, 2>, Row<_MemoryManager, void, 2>,
    Row<_Exception, _Object, 2>, Row<_MemoryException, _Exception, 2>, Row<_SystemUtility, void, 2>,
    Row<_WideString, void, 0>, Row<_DataString, _Object, 6>, Row<_String, void, 2>, Row<_StringParser, void, 2>,
    Row<_WideStringArray, _MutableArray, 5>, Row<_WideTag, _Object, 5>, Row<_WideTagArray, _Container, 5>,
    Row<_WideStringParser, void, 2>,
    Row<_Array, void, 3>, Row<_MutableArray, _Array, 5>, Row<_Container, _MutableArray, 5>, Row<_Stack, void, 2>,
    Row<_Dictionary, _Object, 4>, Row<_DictionaryItem, _Object, 9>, Row<_MutableDictionary, _Dictionary, 7>,
    Row<_Stream, void, 6>, Row<_HandleStream, _Stream, 6>, Row<_FileStream, _HandleStream, 6>,
    Row<_FileUtility, void, 2>, Row<_MemoryStream, _Stream, 6>, Row<_Reader, _Object, 2>, Row<_Persistant, _Object, 5>,
    Row<_StringUtility, void, 2>, Row<UCS, void, 2>,
    Row<DOM, void, 2>, Row<DOM::_DOMOptions, void, 2>, Row<DOM::_XMLNode, _Object, 3>,
    Row<DOM::_XMLAttribute, DOM::_XMLNode, 3>, Row<DOM::_XMLCDATASection, DOM::_XMLNode, 3>,
    Row<DOM::_XMLComment, DOM::_XMLNode, 3>, Row<DOM::_XMLDocumentType, DOM::_XMLNode, 3>,
    Row<DOM::_XMLElement, DOM::_XMLNode, 3>, Row<DOM::_XMLProcessingInstruction, DOM::_XMLNode, 3>,
    Row<DOM::_XMLText, DOM::_XMLNode, 3>, Row<DOM::_XMLDocument, DOM::_XMLNode, 3>,
    Row<DOM::_XMLNamedNodeMap, _Container, 5>,
    Row<COM, void, 2>, Row<COM::_IUnknown, void, 5>, Row<COM::_IClassFactory, COM::_IUnknown, 8>,
    Row<COM::_IClassServer, COM::_IUnknown, 5>, Row<COM::_IModuleFactory, COM::_IClassFactory, 8>,
    Row<COM::_IPersistent, void, 0>, Row<COM::_IStream, void, 0>,
    Row<_Color, _Object, 5>, Row<_Image, _Persistant, 8>, Row<_Palette, _Object, 2>
    // clang-format on
    >;

template <typename... Classes>
struct Set {
    template <typename Class>
    static constexpr bool holds = (std::is_same_v<Class, Classes> || ...);
};

using Abstract = Set<COM, COM::_IClassFactory, DOM::_XMLNode, _Array, _Dictionary, _Stream>;
using WithoutPublicDefault =
    Set<COM::_IUnknown, COM::_IClassServer, COM::_IModuleFactory, _FileStream, _MemoryBlock, _Reader, _Stack>;

template <typename Class, typename Other>
constexpr bool derivesFrom = std::is_base_of_v<Other, Class> && !std::is_same_v<Other, Class>;

/// True when `Base` is the one direct base of `Class` among the classes of the tree.
template <typename Class, typename Base, typename... Others, typename... OtherBases, std::size_t... slots>
consteval bool hasOnlyBase(std::tuple<Row<Others, OtherBases, slots>...> const *) {
    return (... && (derivesFrom<Class, Others> == (std::is_same_v<Others, Base> || derivesFrom<Base, Others>)));
}

template <typename Class>
void checkMaking() {
    EXPECT_EQ(std::is_abstract_v<Class>, Abstract::holds<Class>);
    EXPECT_TRUE(std::is_copy_assignable_v<Class>);
    if constexpr (!std::is_abstract_v<Class>) {
        EXPECT_EQ(
            requires { new Class; }, !WithoutPublicDefault::holds<Class>);
        EXPECT_TRUE(requires(Class const & other) { new Class(other); });
    }
    constexpr bool isCounted = std::is_base_of_v<COM::_IUnknown, Class>;
    EXPECT_EQ(std::is_destructible_v<Class>, !isCounted);
}

template <typename Class, typename Base, std::size_t slots>
void checkRow(Row<Class, Base, slots>) {
    SCOPED_TRACE(typeid(Class).name());
    EXPECT_TRUE((hasOnlyBase<Class, Base>(static_cast<Tree const *>(nullptr))));
    EXPECT_EQ(std::is_polymorphic_v<Class>, slots != 0);
    EXPECT_EQ(std::has_virtual_destructor_v<Class>, slots != 0);
    checkMaking<Class>();
    if constexpr (slots != 0) {
        std::string const name = typeid(Class).name();
        EXPECT_EQ(dlsym(RTLD_DEFAULT, ("_ZTI" + name).c_str()), static_cast<void const *>(&typeid(Class)));
        void * const table = dlsym(RTLD_DEFAULT, ("_ZTV" + name).c_str());
        ASSERT_NE(table, nullptr);
        Dl_info module;
        void * symbol = nullptr;
        ASSERT_NE(dladdr1(table, &module, &symbol, RTLD_DL_SYMENT), 0);
        EXPECT_NE(std::string(module.dli_fname).find("libMorvaneU"), std::string::npos);
        // In front of the slots stand the offset to the top and the type information.
        EXPECT_EQ(static_cast<ElfW(Sym) const *>(symbol)->st_size / sizeof(void *), slots + 2);
    }
}

TEST(ClassTree, HasItsBasesItsTablesAndItsMaking) {
    std::apply([](auto... rows) { (checkRow(rows), ...); }, Tree());
}

/// Expects virtual members in slots that follow each other; the two of the destructor are those that are missing.
template <typename... Members>
void expectSlots(std::ptrdiff_t first, Members... members) {
    auto const slotOf = [](auto member) {
        std::array<std::ptrdiff_t, 2> words;
        static_assert(sizeof member == sizeof words);
        std::memcpy(&words, &member, sizeof words);
        // The mark of a virtual member stands in the first word or, on some processors, in the second one.
        std::ptrdiff_t const offset = (words[0] & 1) != 0 ? words[0] - 1 : (words[1] & 1) != 0 ? words[0] : -1;
        return offset / static_cast<std::ptrdiff_t>(sizeof(void *));
    };
    for (std::ptrdiff_t const slot : {slotOf(members)...}) {
        EXPECT_EQ(slot, first++);
    }
}

TEST(ClassTree, KeepsTheOrderOfItsSlots) {
    expectSlots(2, &_Thread::run);
    expectSlots(2, &_DataString::equals, &_DataString::loadFromStream, &_DataString::saveToStream,
                &_DataString::toString);
    expectSlots(2, &_WideTag::loadFromStream, &_WideTag::saveToStream, &_WideTag::toString);
    expectSlots(2, &_Array::getItem);
    expectSlots(2, &_MutableArray::getItem, &_MutableArray::deleteAll, &_MutableArray::deleteAt);
    expectSlots(2, &_DictionaryItem::compare, &_DictionaryItem::copy, &_DictionaryItem::equals,
                &_DictionaryItem::equalsNoCase, &_DictionaryItem::loadFromStream, &_DictionaryItem::saveToStream,
                &_DictionaryItem::toString);
    expectSlots(2, &_Dictionary::getCount, &_Dictionary::getItem);
    expectSlots(2, &_MutableDictionary::getCount, &_MutableDictionary::getItem, &_MutableDictionary::loadFromStream,
                &_MutableDictionary::saveToStream, &_MutableDictionary::toString);
    expectSlots(0, &_Stream::read, &_Stream::write);
    expectSlots(4, &_Stream::seek, &_Stream::setSize);
    expectSlots(2, &_Persistant::_loadFromStream, &_Persistant::_saveToStream, &_Persistant::_toString);
    expectSlots(2, &DOM::_XMLNode::toString);
    expectSlots(2, &COM::_IUnknown::queryInterface, &COM::_IUnknown::addRef, &COM::_IUnknown::release);
    expectSlots(5, &COM::_IClassFactory::createObjectInstance, &COM::_IClassFactory::loadServer,
                &COM::_IClassFactory::unloadServer);
    expectSlots(2, &_Color::loadFromStream, &_Color::saveToStream, &_Color::toString);
    expectSlots(5, &_Image::loadFromStream, &_Image::saveToStream, &_Image::toString);
}

/// A member for derived classes alone, by the type of a pointer to it, in which `C` is the class.
#define PROTECTED(Class, member, ...)                                                                                  \
    struct Open_##member : Class {                                                                                     \
        using C = Class;                                                                                               \
        using Type = __VA_ARGS__;                                                                                      \
        static_assert(requires { static_cast<Type>(&Open_##member::member); });                                        \
    };                                                                                                                 \
    static_assert(![]<typename Here>() {                                                                               \
        return requires {                                                                                              \
            &Here::member;                                                                                             \
        };                                                                                                             \
    }.template operator()<Class>());

// clang-format off
using Int = std::int32_t;
using Word = std::uint32_t;
using Text = unsigned short int const *;
using Node = _MemoryBlock::_MemoryNode *;

// One member holds the access of all that its class declares beside it.
PROTECTED(_MemoryBlock, createNode, Node (C::*)())
PROTECTED(_WideStringArray, getStringItem, _WideString * (C::*)(Word) const)
PROTECTED(_Array, set_count, void (C::*)(Word))
PROTECTED(_MutableArray, get_list, void ** (C::*)() const)
PROTECTED(_MutableDictionary, _find, Int (C::*)(char const *, char const *) const)
PROTECTED(_MemoryStream, streamAlloc, unsigned char * (C::*)(Int))
PROTECTED(_Reader, initBuffer, void (C::*)())
PROTECTED(_StringUtility, loadWideStringFromStream, bool (*)(_Stream *, _WideString *, Int, bool))
PROTECTED(DOM::_XMLElement, addAttribute, DOM::_XMLAttribute * (C::*)(Text, Text))
PROTECTED(DOM::_XMLDocument, createElement, DOM::_XMLElement * (C::*)(DOM::_XMLNode const *))
PROTECTED(COM::_IUnknown, free, COM::ComResult (C::*)())
PROTECTED(COM::_IModuleFactory, resolveServerID, COM::ComResult (C::*)(COM::ComIdentifier, unsigned short int *&))
PROTECTED(_Image, createImage, bool (C::*)(Int, Int, unsigned char))
// clang-format on

// What stands in memory or in files as it is told: the pointers in it, of which a table is one, and the other bytes.
template <typename Class>
constexpr bool isOf(std::size_t pointers, std::size_t others) {
    std::size_t const size = pointers * sizeof(void *) + others;
    return sizeof(Class) == (size + alignof(Class) - 1) / alignof(Class) * alignof(Class);
}
static_assert(sizeof(COM::ComIdentifier) == 18);
static_assert(sizeof(_MemoryBlock::_MemoryPart) == 8 && sizeof(_MemoryBlock::_MemoryNode) <= 16);
static_assert(isOf<_WideString>(1, 8) && isOf<_DataString>(2, 4) && isOf<_WideTag>(2, 12));
static_assert(isOf<_Exception>(2, 12) && isOf<_MemoryException>(2, 12));
static_assert(isOf<_Color>(1, 4) && isOf<_Image>(3, 12));
static_assert(isOf<COM::_IUnknown>(2, 4) && isOf<COM::_IModuleFactory>(3, 5));

} // namespace
