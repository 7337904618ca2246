#include <morvane/imaging/palette.h>

_Palette::_Palette() = default;

_Palette::_Palette(_Palette const & other) = default;

_Palette::~_Palette() = default;

_Palette & _Palette::operator=(_Palette const & other) = default;
