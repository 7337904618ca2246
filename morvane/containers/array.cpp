#include <morvane/containers/array.h>

_Array::~_Array() = default;
