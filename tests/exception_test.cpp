// Exceptions of the library's classes, thrown by its clients through its own calls. It links the shared library.
#include "temporary_folder.h"

#include <gtest/gtest.h>
#include <morvane/core/exception.h>
#include <morvane/core/memory_exception.h>
#include <morvane/streams/persistant.h>
#include <string>

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
    Thrower<_Exception> plain;
    EXPECT_THROW(memory._saveToFile(filename), _MemoryException);
    EXPECT_THROW(memory._saveToFile(filename), _Object);
    try {
        memory._saveToFile(filename);
        ADD_FAILURE();
    } catch (_Exception exception) { // NOLINT(misc-throw-by-value-catch-by-reference): a copy is what is tested
        EXPECT_EQ(exception.get_code(), clientCode);
        EXPECT_EQ(textOf(exception), "client");
    }
    try {
        plain._saveToFile(filename);
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
    _MemoryException const copy(source);
    _MemoryException assigned;
    assigned = source;
    assigned = *&assigned;
    source.set_message("second");
    for (_Exception const & exception : {copy, assigned}) {
        EXPECT_EQ(exception.get_code(), clientCode);
        EXPECT_EQ(textOf(exception), "first");
    }
    EXPECT_EQ(textOf(source), "second");
}

} // namespace
