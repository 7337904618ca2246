// Exceptions of the library's classes, thrown by its clients through its own calls. It links the shared library.
#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <morvane/morvane.h>
#include <string>

using namespace morvane::literals;

namespace {

constexpr auto clientCode = static_cast<_Exception::ExceptionError>(-7);

std::string textOf(_Exception const & exception) {
    _WideString const message = exception.get_message();
    return {message.arg(), message.arg() + message.get_length()};
}

/// Throws while the library calls it.
template <typename Exception>
struct Thrower : _Persistant {
    bool _saveToStream(_Stream &) override {
        Exception exception;
        exception.set_code(clientCode);
        exception.set_message("client");
        throw exception;
    }
};

TEST(Exception, IsCaughtByItsOwnTypeAndItsBases) {
    TemporaryFolder const folder;
    FileName const filename = folder.name("file");
    Thrower<_MemoryException> memory;
    EXPECT_THROW(memory._saveToFile(filename), _MemoryException);
    try {
        memory._saveToFile(filename);
        ADD_FAILURE();
    } catch (_Exception exception) { // NOLINT(misc-throw-by-value-catch-by-reference): a copy is what is tested
        EXPECT_EQ(exception.get_code(), clientCode);
        EXPECT_EQ(textOf(exception), "client");
    }
    try {
        Thrower<_Exception>()._saveToFile(filename);
        ADD_FAILURE();
    } catch (_MemoryException const &) {
        ADD_FAILURE();
    } catch (_Object const & object) {
        EXPECT_EQ(typeid(object), typeid(_Exception));
    }
}

TEST(Exception, CopiesHoldTheirOwnText) {
    _MemoryException source;
    EXPECT_EQ(source.get_code(), _Exception::ExceptionError{});
    EXPECT_EQ(textOf(source), "");
    source.set_code(clientCode);
    source.set_message("first");
    _MemoryException assigned;
    assigned = source;
    assigned = *&assigned;
    _MemoryException const copy(source);
    source.set_message("second");
    for (_Exception const & exception : {copy, assigned}) {
        EXPECT_EQ(exception.get_code(), clientCode);
        EXPECT_EQ(textOf(exception), "first");
    }
}

TEST(Boundary, IsCrossedByCastsAndByClassesOfClients) {
    // What the library makes is known by its own class here, and what a client derives there.
    DOM::_XMLDocument document;
    _WideString error;
    ASSERT_TRUE(document.loadFromString(u"<a><b/></a>"_w, error));
    DOM::_XMLNode * const node = document.getRoot()->getNode(0);
    EXPECT_NE(dynamic_cast<DOM::_XMLElement *>(node), nullptr);
    EXPECT_EQ(dynamic_cast<DOM::_XMLText *>(node), nullptr);
    int gone = 0;
    struct Derived : DOM::_XMLComment {
        explicit Derived(int & counter) : count(counter) {}
        ~Derived() override { ++count; }
        _WideString toString(std::int32_t) override { return u"<!--derived-->"_w; }

        int & count;
    };
    _Object * const derived = document.getRoot()->addChildNode(new Derived(gone));
    EXPECT_NE(dynamic_cast<Derived *>(derived), nullptr);
    _WideString const text = document.toFormatString();
    EXPECT_GE(text.find(u"<!--derived-->"_w), 0);
    document.resetDocument();
    EXPECT_EQ(gone, 1);
}

} // namespace
