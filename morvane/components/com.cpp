#include <morvane/components/com.h>

#include <cstddef>
#include <morvane/components/iclass_server.h>
#include <morvane/components/imodule_factory.h>
#include <new>

namespace {

/// Copies up to its closing zero, or as many bytes as the field takes.
template <std::size_t Size>
void copyText(char (&field)[Size], char const * text) {
    for (std::size_t index = 0; index < Size && text[index] != 0; ++index) {
        field[index] = text[index];
    }
}

} // namespace

COM::COM() = default;

COM::COM(COM const &) {}

COM::~COM() = default;

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to assign.
COM & COM::operator=(COM const &) {
    return *this;
}

COM::ComIdentifier COM::createClassID(unsigned short int number1, unsigned short int number2,
                                      unsigned short int number3, char const * text4, char const * text8) {
    ComIdentifier id{};
    if (text4 == nullptr || text8 == nullptr) {
        return id;
    }
    id.word1 = number1;
    id.word2 = number2;
    id.word3 = number3;
    copyText(id.text4, text4);
    copyText(id.text8, text8);
    return id;
}

COM::ComResult COM::createClassFactory(ComFactory kind, _IClassFactory ** factory) {
    if (factory == nullptr || *factory == nullptr) {
        return comBadPointer;
    }
    if (kind != comFactoryModule) {
        return comNotFound;
    }
    *factory = new (std::nothrow) _IModuleFactory;
    return comOk;
}

COM::ComResult COM::createClassServer(_IClassServer ** server) {
    if (server != nullptr && *server != nullptr) {
        *server = new (std::nothrow) _IClassServer;
    }
    return comFailed;
}
