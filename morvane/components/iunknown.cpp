// Built with an option that keeps the tests of `this` against null: clients call these members on null objects.
#include <morvane/components/iunknown.h>

#include <morvane/components/iclass_factory.h>
#include <morvane/platform/single_thread.h>

namespace {

/// Adds `change` to the count and gives the sum, which wraps around.
std::int32_t change(std::atomic<std::int32_t> & count, std::int32_t change) {
    auto const add = [change](std::int32_t value) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) + static_cast<std::uint32_t>(change));
    };
    if (morvane::platform::isSingleThreaded()) {
        std::int32_t const sum = add(count.load(std::memory_order_relaxed));
        count.store(sum, std::memory_order_relaxed);
        return sum;
    }
    // The thread that takes the last reference must see all that the others did to the object.
    return add(count.fetch_add(change, std::memory_order_acq_rel));
}

} // namespace

COM::_IUnknown::_IUnknown(_IUnknown const & other)
    : classFactory(other.classFactory), referenceCount(other.referenceCount.load(std::memory_order_relaxed)) {}

COM::_IUnknown::~_IUnknown() {
    classFactory = nullptr;
}

COM::ComResult COM::_IUnknown::queryInterface(ComIdentifier id, void ** object) {
    return classFactory == nullptr ? comFailed : classFactory->createObjectInstance(id, object);
}

std::int32_t COM::_IUnknown::addRef() {
    return this == nullptr ? -1 : change(referenceCount, 1);
}

std::int32_t COM::_IUnknown::release() {
    if (this == nullptr) {
        return -1;
    }
    std::int32_t const left = change(referenceCount, -1);
    if (left == 0) {
        free();
    }
    return left;
}

COM::_IUnknown & COM::_IUnknown::operator=(_IUnknown const & other) {
    classFactory = other.classFactory;
    referenceCount.store(other.referenceCount.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *this;
}

COM::_IUnknown::_IUnknown() : classFactory(nullptr), referenceCount(1) {}

COM::ComResult COM::_IUnknown::free() {
    if (this == nullptr) {
        return comFailed;
    }
    delete this;
    return comOk;
}
