#include <morvane/components/iclass_factory.h>

COM::_IClassFactory::_IClassFactory(_IClassFactory const & other) = default;

COM::_IClassFactory & COM::_IClassFactory::operator=(_IClassFactory const & other) = default;

COM::ComResult COM::_IClassFactory::loadResolutionTable(unsigned short int const *) {
    return comFailed;
}

COM::_IClassFactory::_IClassFactory() = default;

COM::_IClassFactory::~_IClassFactory() = default;
