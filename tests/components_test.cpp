#include "ordinary_allocator.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <morvane/components/com.h>
#include <morvane/components/iclass_factory.h>
#include <morvane/components/iclass_server.h>
#include <morvane/components/imodule_factory.h>
#include <morvane/core/literals.h>
#include <morvane/platform/modules.h>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace morvane::literals;

namespace {

using Id = COM::ComIdentifier;

/// Calls on a null object are asked for here, so that the sanitizer has to let them pass.
#define CALLS_ON_NULL __attribute__((no_sanitize("undefined")))

/// A counted object that tells when it goes.
struct Counted : COM::_IUnknown {
    explicit Counted(int & counter) : destroyed(counter) {}
    Counted(Counted const & other) = default;
    ~Counted() override { ++destroyed; }

    CALLS_ON_NULL static COM::ComResult freeNow(Counted * object) { return object->free(); }

    int & destroyed;
};

/// A factory that tells what it is asked for.
struct Factory : COM::_IClassFactory {
    COM::ComResult createObjectInstance(Id id, void ** object) override {
        lastWord = id.word1;
        *object = this;
        return COM::comNotFound;
    }
    COM::ComResult loadServer(Id) override { return COM::comOk; }
    COM::ComResult unloadServer() override { return COM::comOk; }

    int lastWord = 0;
};

struct ModuleFactory : COM::_IModuleFactory {
    COM::ComResult resolve(Id id, unsigned short int *& path) { return resolveServerID(id, path); }
};

/// No call of the interface gives these fields a value. They are reached where they stand: behind the table pointer, in
/// the order that the classes declare.
template <typename Field>
Field & fieldOf(COM::_IUnknown * object, std::size_t offset) {
    return *reinterpret_cast<Field *>(reinterpret_cast<char *>(object) + offset);
}

constexpr std::size_t classFactoryOffset = sizeof(void *);
constexpr std::size_t referenceCountOffset = 2 * sizeof(void *);
constexpr std::size_t serverLockedOffset = referenceCountOffset + 4;
constexpr std::size_t serverModuleOffset = 3 * sizeof(void *);

TEST(ClassIdentifier, IsCutAndFilledUp) {
    std::pair<char const *, std::string> const texts4[] = {
        {"ABCDE", "ABCD"}, {"AB", {"AB\0\0", 4}}, {"", {"\0\0\0", 4}}};
    for (auto const & [text, expected] : texts4) {
        Id const id = COM::createClassID(1, 0xFFFF, 3, text, "123456789");
        EXPECT_TRUE(id.word1 == 1 && id.word2 == 0xFFFF && id.word3 == 3);
        EXPECT_EQ(std::string(id.text4, 4), expected);
        EXPECT_EQ(std::string(id.text8, 8), "12345678");
        EXPECT_EQ(std::string(COM::createClassID(1, 2, 3, "", text).text8, 8),
                  (text + std::string(8, '\0')).substr(0, 8));
    }
    Id const zeros{};
    for (Id const & id : {COM::createClassID(1, 2, 3, nullptr, "x"), COM::createClassID(1, 2, 3, "x", nullptr)}) {
        EXPECT_EQ(std::memcmp(&id, &zeros, sizeof id), 0);
    }
}

TEST(CountedObject, GoesWithItsLastReferenceAndCopiesItsCount) {
    int destroyed = 0;
    auto * const source = new Counted(destroyed);
    EXPECT_EQ(source->addRef(), 2);
    auto * const copy = new Counted(*source);
    auto * const assigned = new Counted(destroyed);
    static_cast<COM::_IUnknown &>(*assigned) = *source;
    int expected = 0;
    for (COM::_IUnknown * object : {source, copy, assigned}) {
        EXPECT_EQ(object->release(), 1);
        EXPECT_EQ(destroyed, expected++);
        EXPECT_EQ(object->release(), 0);
        EXPECT_EQ(destroyed, expected);
    }
    // Freeing doesn't ask for the count.
    auto * const freed = new Counted(destroyed);
    freed->addRef();
    EXPECT_EQ(Counted::freeNow(freed), COM::comOk);
    EXPECT_EQ(destroyed, 4);
}

CALLS_ON_NULL std::int32_t addRefOn(COM::_IUnknown * object) {
    return object->COM::_IUnknown::addRef();
}

CALLS_ON_NULL std::int32_t releaseOn(COM::_IUnknown * object) {
    return object->COM::_IUnknown::release();
}

TEST(CountedObject, AnswersWhenItIsNull) {
    Counted * volatile nobody = nullptr;
    EXPECT_EQ(addRefOn(nobody), -1);
    EXPECT_EQ(releaseOn(nobody), -1);
    EXPECT_EQ(Counted::freeNow(nobody), COM::comFailed);
}

TEST(CountedObject, IsDestroyedOnceHoweverManyThreadsLetGo) {
    constexpr int threadCount = 4;
    int destroyed = 0;
    COM::_IUnknown * const object = new Counted(destroyed);
    for (int index = 1; index < threadCount; ++index) {
        object->addRef();
    }
    std::vector<int> zeros(threadCount);
    std::vector<std::thread> threads;
    for (int & zero : zeros) {
        threads.emplace_back([object, &zero] {
            for (int round = 0; round < 20000; ++round) {
                object->addRef();
                zero += object->release() == 0;
            }
            zero += object->release() == 0;
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(std::count(zeros.begin(), zeros.end(), 1), 1);
    EXPECT_EQ(std::count(zeros.begin(), zeros.end(), 0), threadCount - 1);
}

TEST(CountedObject, AsksItsFactoryForInterfaces) {
    int destroyed = 0;
    auto * const object = new Counted(destroyed);
    auto * const factory = new Factory;
    void * result = nullptr;
    EXPECT_EQ(object->queryInterface(COM::createClassID(7, 0, 0, "", ""), &result), COM::comFailed);
    EXPECT_EQ(fieldOf<COM::_IClassFactory *>(object, classFactoryOffset), nullptr);
    EXPECT_EQ(fieldOf<std::int32_t>(object, referenceCountOffset), 1);

    fieldOf<COM::_IClassFactory *>(object, classFactoryOffset) = factory;
    auto * const copy = new Counted(*object);
    for (Counted * asked : {object, copy}) {
        result = nullptr;
        factory->lastWord = 0;
        EXPECT_EQ(asked->queryInterface(COM::createClassID(7, 0, 0, "", ""), &result), COM::comNotFound);
        EXPECT_EQ(factory->lastWord, 7);
        EXPECT_EQ(result, factory);
        asked->release();
    }
    EXPECT_EQ(factory->loadResolutionTable(u"table"_w), COM::comFailed);
    factory->release();
}

TEST(Creation, OverwritesOnlyAPointerThatIsNotNull) {
    auto * const former = new Factory;
    COM::_IClassFactory * factory = nullptr;
    EXPECT_EQ(COM::createClassFactory(COM::comFactoryModule, nullptr), COM::comBadPointer);
    EXPECT_EQ(COM::createClassFactory(COM::comFactoryModule, &factory), COM::comBadPointer);
    EXPECT_EQ(factory, nullptr);
    factory = former;
    EXPECT_EQ(COM::createClassFactory(static_cast<COM::ComFactory>(1), &factory), COM::comNotFound);
    EXPECT_EQ(factory, former);
    EXPECT_EQ(COM::createClassFactory(COM::comFactoryModule, &factory), COM::comOk);
    ASSERT_NE(dynamic_cast<COM::_IModuleFactory *>(factory), nullptr);
    EXPECT_EQ(factory->release(), 0);

    COM::_IClassServer * server = nullptr;
    EXPECT_EQ(COM::createClassServer(nullptr), COM::comFailed);
    EXPECT_EQ(COM::createClassServer(&server), COM::comFailed);
    EXPECT_EQ(server, nullptr);
    auto * const placeholder = reinterpret_cast<COM::_IClassServer *>(former);
    server = placeholder;
    EXPECT_EQ(COM::createClassServer(&server), COM::comFailed);
    ASSERT_NE(server, placeholder);
    void * object = nullptr;
    EXPECT_EQ(server->createObjectInstance({}, &object), COM::comBadPointer);
    EXPECT_EQ(server->createObjectInstance({}, nullptr), COM::comBadPointer);
    object = former;
    EXPECT_EQ(server->createObjectInstance({}, &object), COM::comFailed);
    EXPECT_EQ(object, former);
    EXPECT_EQ(server->release(), 0);
    EXPECT_EQ(former->release(), 0);
}

TEST(Creation, StoresNullWhereThereIsNoMemory) {
    auto * const former = new Factory;
    COM::_IClassFactory * factory = former;
    auto * server = reinterpret_cast<COM::_IClassServer *>(former);
    ordinary_allocator::servedBeforeRefusal = 0;
    COM::ComResult const factoryResult = COM::createClassFactory(COM::comFactoryModule, &factory);
    COM::ComResult const serverResult = COM::createClassServer(&server);
    ordinary_allocator::servedBeforeRefusal = -1;
    EXPECT_EQ(factoryResult, COM::comOk);
    EXPECT_EQ(factory, nullptr);
    EXPECT_EQ(serverResult, COM::comFailed);
    EXPECT_EQ(server, nullptr);
    former->release();
}

TEST(ModuleFactory, FindsNoServer) {
    auto * const factory = new ModuleFactory;
    unsigned short int unit = 0;
    unsigned short int * path = &unit;
    void * object = &unit;
    EXPECT_EQ(factory->loadServer(COM::createClassID(1, 2, 3, "a", "b")), COM::comNotFound);
    EXPECT_EQ(factory->resolve({}, path), COM::comFailed);
    EXPECT_EQ(path, &unit);
    EXPECT_EQ(factory->createObjectInstance({}, &object), COM::comFailed);
    EXPECT_EQ(object, &unit);
    EXPECT_EQ(fieldOf<HINSTANCE__ *>(factory, serverModuleOffset), nullptr);
    EXPECT_FALSE(fieldOf<bool>(factory, serverLockedOffset));
    EXPECT_EQ(factory->unloadServer(), COM::comFailed);
    factory->release();
}

TEST(ModuleFactory, LetsGoOfItsModuleOnce) {
    std::u16string const name = MORVANE_SAMPLE_MODULE;
    std::basic_string<unsigned short int> const path(name.begin(), name.end());
    auto const isLoaded = [&path] { return morvane::platform::findModule(path.c_str()) != nullptr; };
    auto * const factory = new ModuleFactory;

    fieldOf<HINSTANCE__ *>(factory, serverModuleOffset) = morvane::platform::loadModule(path.c_str());
    fieldOf<bool>(factory, serverLockedOffset) = true;
    EXPECT_EQ(factory->unloadServer(), COM::comFailed);
    EXPECT_TRUE(isLoaded());
    fieldOf<bool>(factory, serverLockedOffset) = false;
    EXPECT_EQ(factory->unloadServer(), COM::comOk);
    EXPECT_FALSE(isLoaded());
    EXPECT_EQ(fieldOf<HINSTANCE__ *>(factory, serverModuleOffset), nullptr);
    EXPECT_EQ(factory->unloadServer(), COM::comFailed);

    fieldOf<HINSTANCE__ *>(factory, serverModuleOffset) = morvane::platform::loadModule(path.c_str());
    EXPECT_TRUE(isLoaded());
    factory->release();
    EXPECT_FALSE(isLoaded());
}

} // namespace
