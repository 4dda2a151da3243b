// Characters as pen strokes, so that numbers look right in every size.
#pragma once

#include "host/Canvas.h"

#include <vector>

namespace host {

struct Glyph {
    float width = 0;                         // of the character cell; a digit is 6 high
    std::vector<std::vector<Point>> strokes; // y grows downward
};

// Digits, the letters x, y and z, the full stop, comma, minus sign and blank; an empty cell for
// every other character.
const Glyph& glyphOf(char character);

} // namespace host
