#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <morvane/morvane.h>
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

    CALLS_ON_NULL static auto addRefOn(Counted * object) { return object->COM::_IUnknown::addRef(); }
    CALLS_ON_NULL static auto releaseOn(Counted * object) { return object->COM::_IUnknown::release(); }
    CALLS_ON_NULL static auto freeNow(Counted * object) { return object->free(); }

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
constexpr std::size_t serverModuleOffset = sizeof(void *) == 8 ? 24 : 16;

TEST(ClassIdentifier, IsCutAndFilledUp) {
    for (std::string const text : {"123456789", "ABCDE", "AB", ""}) {
        Id const id = COM::createClassID(1, 0xFFFF, 3, text.c_str(), text.c_str());
        std::string const filled = text + std::string(8, '\0');
        EXPECT_TRUE(id.word1 == 1 && id.word2 == 0xFFFF && id.word3 == 3);
        EXPECT_EQ(std::string(id.text4, 4), filled.substr(0, 4));
        EXPECT_EQ(std::string(id.text8, 8), filled.substr(0, 8));
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
        EXPECT_TRUE(object->release() == 1 && destroyed == expected);
        EXPECT_TRUE(object->release() == 0 && destroyed == ++expected);
    }
    // Freeing doesn't ask for the count.
    auto * const freed = new Counted(destroyed);
    freed->addRef();
    EXPECT_TRUE(Counted::freeNow(freed) == COM::comOk && destroyed == 4);
    Counted * volatile nobody = nullptr;
    EXPECT_TRUE(Counted::addRefOn(nobody) == -1 && Counted::releaseOn(nobody) == -1);
    EXPECT_EQ(Counted::freeNow(nobody), COM::comFailed);
}

TEST(CountedObject, IsDestroyedOnceHoweverManyThreadsLetGo) {
    constexpr int threadCount = 4;
    int destroyed = 0;
    COM::_IUnknown * const object = new Counted(destroyed);
    for (int index = 1; index < threadCount; ++index) {
        object->addRef();
    }
    std::atomic<int> zeros{0};
    std::vector<std::jthread> threads;
    while (threads.size() < threadCount) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20000; ++round) {
                object->addRef();
                zeros += object->release() == 0;
            }
            zeros += object->release() == 0;
        });
    }
    threads.clear();
    EXPECT_TRUE(destroyed == 1 && zeros == 1);
}

TEST(CountedObject, AsksItsFactoryForInterfaces) {
    int destroyed = 0;
    auto * const object = new Counted(destroyed);
    auto * const factory = new Factory;
    void * result = nullptr;
    Id const id = COM::createClassID(7, 0, 0, "", "");
    EXPECT_EQ(object->queryInterface(id, &result), COM::comFailed);
    EXPECT_EQ(fieldOf<COM::_IClassFactory *>(object, classFactoryOffset), nullptr);
    EXPECT_EQ(fieldOf<std::int32_t>(object, referenceCountOffset), 1);
    fieldOf<COM::_IClassFactory *>(object, classFactoryOffset) = factory;
    for (Counted * const asked : {new Counted(*object), object}) {
        result = nullptr;
        EXPECT_EQ(asked->queryInterface(id, &result), COM::comNotFound);
        EXPECT_TRUE(std::exchange(factory->lastWord, 0) == 7 && result == factory);
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
    EXPECT_EQ(std::exchange(factory, former), nullptr);
    EXPECT_EQ(COM::createClassFactory(static_cast<COM::ComFactory>(1), &factory), COM::comNotFound);
    EXPECT_EQ(factory, former);
    EXPECT_EQ(COM::createClassFactory(COM::comFactoryModule, &factory), COM::comOk);
    ASSERT_NE(dynamic_cast<COM::_IModuleFactory *>(factory), nullptr);
    EXPECT_EQ(factory->release(), 0);

    COM::_IClassServer * server = nullptr;
    auto * const placeholder = reinterpret_cast<COM::_IClassServer *>(former);
    EXPECT_EQ(COM::createClassServer(nullptr), COM::comFailed);
    EXPECT_EQ(COM::createClassServer(&server), COM::comFailed);
    EXPECT_EQ(std::exchange(server, placeholder), nullptr);
    EXPECT_EQ(COM::createClassServer(&server), COM::comFailed);
    ASSERT_NE(server, placeholder);
    void * object = nullptr;
    EXPECT_EQ(server->createObjectInstance({}, nullptr), COM::comBadPointer);
    EXPECT_EQ(server->createObjectInstance({}, &object), COM::comBadPointer);
    object = former;
    EXPECT_EQ(server->createObjectInstance({}, &object), COM::comFailed);
    EXPECT_TRUE(object == former && server->release() == 0 && former->release() == 0);
}

TEST(ModuleFactory, FindsNoServerAndLetsGoOfItsModuleOnce) {
    std::u16string const name = MORVANE_SAMPLE_MODULE;
    std::basic_string<unsigned short int> const path(name.begin(), name.end());
    auto const isLoaded = [&path] { return morvane::platform::findModule(path.c_str()) != nullptr; };
    auto * const factory = new ModuleFactory;
    auto & module = fieldOf<HINSTANCE__ *>(factory, serverModuleOffset);
    auto & locked = fieldOf<bool>(factory, serverLockedOffset);
    unsigned short int unit = 0;
    unsigned short int * found = &unit;
    void * object = &unit;
    EXPECT_EQ(factory->loadServer(COM::createClassID(1, 2, 3, "a", "b")), COM::comNotFound);
    EXPECT_TRUE(factory->resolve({}, found) == COM::comFailed && found == &unit);
    EXPECT_TRUE(factory->createObjectInstance({}, &object) == COM::comFailed && object == &unit);
    EXPECT_TRUE(module == nullptr && !locked && factory->unloadServer() == COM::comFailed);
    module = morvane::platform::loadModule(path.c_str());
    locked = true;
    EXPECT_TRUE(factory->unloadServer() == COM::comFailed && isLoaded());
    locked = false;
    EXPECT_TRUE(factory->unloadServer() == COM::comOk && !isLoaded());
    EXPECT_TRUE(module == nullptr && factory->unloadServer() == COM::comFailed);
    module = morvane::platform::loadModule(path.c_str());
    EXPECT_TRUE(isLoaded());
    factory->release();
    EXPECT_FALSE(isLoaded());
}

} // namespace
