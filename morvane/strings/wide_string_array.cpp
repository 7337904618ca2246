#include <morvane/strings/wide_string_array.h>

#include <cstddef>
#include <new>
#include <set>
#include <utility>
#include <vector>

namespace morvane {

/// The texts of an array and its copies, each deleted once.
class StringPool {
public:
    StringPool() = default;
    StringPool(StringPool const &) = delete;
    ~StringPool() {
        if (!adopted.empty()) {
            for (std::unique_ptr<_WideString> const & text : made) {
                adopted.erase(text.get());
            }
        }
        for (_WideString const * const text : adopted) {
            delete text;
        }
    }

    StringPool & operator=(StringPool const &) = delete;

    _WideString * make(_WideString && text) {
        made.push_back(nullptr);
        try {
            made.back() = std::make_unique<_WideString>(std::move(text));
        } catch (...) {
            made.pop_back();
            throw;
        }
        return made.back().get();
    }
    /// Deletes the text that was made last.
    void unmake() { made.pop_back(); }

    /// Takes over the texts of `array` that were not made here: a client may have put them into the list.
    void adopt(_MutableArray const & array) {
        std::size_t next = 0;
        for (std::uint32_t index = 0; index < array.get_count(); ++index) {
            auto * const text = static_cast<_WideString *>(array._MutableArray::getItem(index));
            if (text == nullptr) {
                continue;
            }
            // Mostly the list holds what was made in the order in which it was made.
            while (next < made.size() && made[next].get() != text) {
                ++next;
            }
            if (next < made.size()) {
                ++next;
            } else {
                adopted.insert(text);
            }
        }
    }

private:
    std::vector<std::unique_ptr<_WideString>> made;
    /// Texts from the lists, some of which may be made here.
    std::set<_WideString *> adopted;
};

} // namespace morvane

using morvane::StringPool;

namespace {

constexpr std::uint32_t noIndex = static_cast<std::uint32_t>(-1);

} // namespace

_WideStringArray::_WideStringArray() = default;

_WideStringArray::_WideStringArray(_WideStringArray const & other) : _MutableArray(other), pool(other.needPool()) {}

_WideStringArray::~_WideStringArray() {
    adoptEntries();
}

_WideStringArray & _WideStringArray::operator=(_WideStringArray const & other) {
    if (this != &other) {
        std::shared_ptr<StringPool> shared = other.needPool();
        adoptEntries();
        _MutableArray::operator=(other);
        pool = std::move(shared);
    }
    return *this;
}

std::uint32_t _WideStringArray::addString(unsigned short int const * text) {
    return text == nullptr ? noIndex : addMade(_WideString(text));
}

std::uint32_t _WideStringArray::findString(unsigned short int const * text) {
    for (std::uint32_t index = 0; index < get_count(); ++index) {
        _WideString const * const item = getStringItem(index);
        if (item != nullptr && item->compareNoCase(text) == 0) {
            return index;
        }
    }
    return noIndex;
}

void _WideStringArray::setString(std::uint32_t index, unsigned short int const * text) {
    if (index >= get_count()) {
        return;
    }
    if (_WideString * const item = getStringItem(index)) {
        *item = text;
    } else {
        setItem(index, needPool()->make(_WideString(text)));
    }
}

_WideString _WideStringArray::getString(std::uint32_t index) const {
    _WideString const * const item = index < get_count() ? getStringItem(index) : nullptr;
    return item == nullptr ? _WideString() : *item;
}

_WideString * _WideStringArray::getStringItem(std::uint32_t index) const {
    return static_cast<_WideString *>(_MutableArray::getItem(index));
}

std::uint32_t _WideStringArray::addMade(_WideString && text) {
    StringPool & texts = *needPool();
    std::uint32_t const index = add(texts.make(std::move(text)));
    if (index == noIndex) {
        texts.unmake();
    }
    return index;
}

std::shared_ptr<StringPool> const & _WideStringArray::needPool() const {
    if (pool == nullptr) {
        pool = std::make_shared<StringPool>();
    }
    return pool;
}

void _WideStringArray::adoptEntries() noexcept {
    try {
        if (get_list() != nullptr) {
            needPool()->adopt(*this);
        }
    } catch (std::bad_alloc const &) {
        // No memory to note a text that a client put in: it outlives its array.
    }
}
