// The library's copies of the callback classes.

#include "remapColorCallbacks.h"

REMAPCOLOR_CALLBACKS(template REMAPCOLOR_EXPORT)
