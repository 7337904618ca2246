// The palette class beside the image, which carries nothing.
#pragma once

#include <morvane/core/object.h>
#include <morvane/export.h>

/// Has no content; the colours of an image are `_Image::getPalette`.
class MORVANE_EXPORT _Palette : public _Object {
public:
    _Palette();
    /// Copies nothing.
    _Palette(_Palette const & other);
    ~_Palette() override;

    /// Does nothing and gives the object back.
    _Palette & operator=(_Palette const & other);
};
